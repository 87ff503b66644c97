#include "desk/options.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdlib>

#include "desk/commands.h"
#include "desk/exit_status.h"
#include "desk/host_library.h"
#include "desk/strict_json.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

constexpr char kOnlyTyped[] = "-";
constexpr std::size_t kHelpColumn = 32;
constexpr std::size_t kHelpWidth = 76;
constexpr double kLongestSeconds = 604'800;

constexpr char kExamples[] = R"(Examples:
  panelry-desk                         the shipped workspace on a running market
  panelry-desk mine.json --fresh       a workspace of your own, the accounts as at the beginning
  panelry-desk demo.jsonl              a minute of sample panels, without a market
  panelry-desk - --market --json       no panels: orders on standard input, events as JSON Lines
  panelry-desk --speed 60 --start 09:14:30 --scenario "fast-market 2000"
  panelry-desk --fault late=800 --fault doubled
  panelry-desk --inspect               why does my module not load?
)";

/// "41001=Quotes" into `titles`; false for anything else.
bool AddTitle(const std::string& text, Titles& titles)
{
    const std::size_t equals = text.find('=');
    const std::optional<std::int32_t> id = ParseNumber(std::string_view(text).substr(0, equals));
    if (equals == std::string::npos || !id) {
        return false;
    }
    titles[*id] = text.substr(equals + 1);
    return true;
}

/// Broken into lines; the manual indents those behind the first.
std::string Wrapped(const std::string& text)
{
    std::string wrapped;
    std::size_t column = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        const std::size_t length = end - at;
        const bool fits = column + 1 + length <= kHelpWidth;
        wrapped += wrapped.empty() ? "" : fits ? " " : "\n";
        column = fits && column > 0 ? column + 1 + length : length;
        wrapped.append(text, at, length);
        at = end + 1;
    }
    return wrapped;
}

/// Throws the error of the command line that names the option.
[[noreturn]] void Refuse(const std::string& option, const std::string& reason)
{
    throw CLI::ValidationError(option, reason);
}

double Decimal(const std::string& option, const std::string& text, double most)
{
    const std::optional<double> number = ParseDecimal(text);
    if (!number || *number > most) {
        Refuse(option,
               Quoted(text) + " is no number from 0 to " + std::to_string(static_cast<std::int64_t>(most)));
    }
    return *number;
}

std::uint64_t Seed(const std::string& text)
{
    std::uint64_t seed = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), seed);
    if (error != std::errc() || stop != text.data() + text.size()) {
        Refuse("--seed", Quoted(text) + " is no whole number");
    }
    return seed;
}

/// A name that isn't found where the user stands is looked for beside the program.
fs::path Found(const fs::path& name)
{
    const fs::path shipped = ProgramDirectory() / name;
    return !fs::exists(name) && name.is_relative() && fs::exists(shipped) ? shipped : name;
}

/// What the command line is read into.
class Manual
{
public:
    Manual();

    std::variant<Options, int> Parse(int argc, const char* const* argv);

private:
    void AddPlaying();
    void AddMarket();
    void AddOutput();
    void AddInspecting();
    void TakeFault(const std::string& text);
    void TakeScenario(const std::string& text);
    void TakePlayed();

    /// An option with one value, that means a market.
    CLI::Option* MarketOption(const std::string& name, const char* type, const std::string& help,
                              const std::function<void(const std::string&)>& take);
    /// An option that may be repeated.
    CLI::Option* Repeated(const std::string& name, const char* type, const std::string& help,
                          const std::function<void(const std::string&)>& take);

    CLI::App m_app{
        "Plays a trading client with a market of its own: loads the panels' library, opens a workspace\n"
        "or plays a script, takes orders and messages on standard input, and says what happens."};
    Options m_options;
    fs::path m_played;
    fs::path m_securities;
    fs::path m_inspected;
    bool m_asJson = false;
    bool m_asText = false;
    CLI::Option* m_market = nullptr;
    CLI::Option* m_inspect = nullptr;
    std::vector<CLI::Option*> m_marketOptions;
};

Manual::Manual()
{
    m_options.library = DefaultLibrary();
    m_app.set_version_flag("--version", PANELRY_DESK_VERSION);
    m_app.set_help_flag("-h,--help", "this manual");
    m_app.get_formatter()->column_width(kHelpColumn);
    AddPlaying();
    AddMarket();
    AddOutput();
    AddInspecting();
    for (CLI::Option* const option : m_app.get_options()) {
        option->description(Wrapped(option->get_description()));
    }
    m_app.name("panelry-desk");
    m_app.footer("\nAt the prompt, and under \"desk\" in a script:\n" + CommandHelp() + "\n" + kExamples);
}

void Manual::AddPlaying()
{
    m_app.add_option(
        "PLAYED", m_played,
        "a workspace (.json) or a script (.jsonl); \"-\": only what is typed (default: workspace.json "
        "beside the program, where other names are looked for too)");
    m_app.add_option("--library", m_options.library, "the panels' library (default: beside the program)");
    Repeated("--name", "ID=TITLE", "a panel's title; may be repeated", [this](const std::string& name) {
        if (!AddTitle(name, m_options.titles)) {
            Refuse("--name", Quoted(name) + " isn't ID=TITLE");
        }
    });
    m_app.add_flag("--stay", m_options.stay,
                   "go on behind a script until \"quit\" or a signal; a workspace does so anyway");
    m_app
        .add_option_function<std::string>(
            "--for",
            [this](const std::string& text) {
                m_options.length = std::chrono::milliseconds(
                    static_cast<std::int64_t>(Decimal("--for", text, kLongestSeconds) * 1000));
            },
            "end by itself after so many seconds")
        ->type_name("SECONDS");
}

CLI::Option* Manual::MarketOption(const std::string& name, const char* type, const std::string& help,
                                  const std::function<void(const std::string&)>& take)
{
    CLI::Option* const option = m_app.add_option_function<std::string>(name, take, help);
    m_marketOptions.push_back(option);
    return option->type_name(type)->group("Market");
}

CLI::Option* Manual::Repeated(const std::string& name, const char* type, const std::string& help,
                              const std::function<void(const std::string&)>& take)
{
    const auto takeAll = [take](const std::vector<std::string>& values) {
        for (const std::string& value : values) {
            take(value);
        }
    };
    return m_app.add_option_function<std::vector<std::string>>(name, takeAll, help)
        ->type_name(type)
        ->allow_extra_args(false);
}

void Manual::AddMarket()
{
    MarketWish& market = m_options.market;
    m_market =
        m_app
            .add_option("--market", m_securities,
                        "a market for a script, too: the securities in FILE (default: securities.json beside "
                        "the program). A workspace has one anyway, and each option of this group brings it")
            ->type_name("FILE")
            ->expected(0, 1)
            ->group("Market");
    m_marketOptions.push_back(m_market);
    MarketOption("--accounts", "FILE",
                 "with what the accounts begin (default: accounts.json beside the program)",
                 [&market](const std::string& text) { market.accounts = text; });
    CLI::Option* const state = MarketOption(
        "--state", "FILE",
        "where the accounts are kept (default: desk.sqlite in " + StateDirectory().string() + ")",
        [&market](const std::string& text) { market.state = text; });
    CLI::Option* const fresh =
        m_app.add_flag("--fresh", m_options.afresh, "begin the accounts anew")->group("Market");
    CLI::Option* const memory =
        m_app.add_flag("--memory", m_options.keepsNothing, "keep nothing of the accounts")
            ->group("Market")
            ->excludes(state);
    m_marketOptions.insert(m_marketOptions.end(), {fresh, memory});
    MarketOption("--seed", "N", "of the market's chance: equal seeds make equal days",
                 [&market](const std::string& text) { market.seed = Seed(text); });
    MarketOption("--speed", "X", "of the market's clock, 1 is real time, 0 stands",
                 [&market](const std::string& text) { market.speed = Decimal("--speed", text, kFastest); });
    MarketOption("--start", "HH:MM[:SS]", "where the market's day begins",
                 [&market](const std::string& text) {
                     market.start = ParseTimeOfDay(text);
                     if (!market.start) {
                         Refuse("--start", Quoted(text) + " is no time of day");
                     }
                 });
    MarketOption("--rate", "N", "quote changes a second, of all securities together",
                 [&market](const std::string& text) { market.rate = Decimal("--rate", text, kHighestRate); });
    m_marketOptions.push_back(
        Repeated("--fault", "NAME[=N]",
                 "switched on from the start; may be repeated (command \"fault\" lists them)",
                 [this](const std::string& text) { TakeFault(text); })
            ->group("Market"));
    m_marketOptions.push_back(
        Repeated("--scenario", "\"NAME ...\"",
                 "played at the start; may be repeated (command \"scenario\" lists them)",
                 [this](const std::string& text) { TakeScenario(text); })
            ->group("Market"));
    MarketOption("--tape", "FILE", "write all that the exchange does to FILE",
                 [this](const std::string& text) { m_options.tape = text; });
}

void Manual::AddOutput()
{
    CLI::Option* const json = m_app.add_flag(
        "--json", m_asJson, "say all as JSON Lines; the default unless standard output is a terminal");
    m_app.add_flag("--text", m_asText, "say all in lines for people; the default on a terminal")
        ->excludes(json);
    m_app.add_flag("--requests", m_options.tellsRequests,
                   "say what the panels ask of the market's host, too");
}

void Manual::AddInspecting()
{
    m_inspect =
        m_app
            .add_option("--inspect", m_inspected,
                        "look at the module libraries in DIR (default: adsplugins beside the program) and at "
                        "the settings of its host, tell what is wrong with them, and play nothing")
            ->type_name("DIR")
            ->expected(0, 1);
}

void Manual::TakeFault(const std::string& text)
{
    try {
        const std::size_t equals = std::min(text.find('='), text.size());
        m_options.beginnings.emplace_back(
            ParseFault(text.substr(0, equals), equals < text.size() ? text.substr(equals + 1) : ""));
    } catch (const BadText& reason) {
        Refuse("--fault", reason.what());
    }
}

void Manual::TakeScenario(const std::string& text)
{
    try {
        const Act act = ParseCommand("scenario " + text);
        m_options.beginnings.push_back(std::get<MarketAct>(act).command);
    } catch (const BadText& reason) {
        Refuse("--scenario", reason.what());
    }
}

void Manual::TakePlayed()
{
    if (m_played == kOnlyTyped) {
        return;
    }
    if (m_played.empty() || m_played.extension() == ".json") {
        m_options.workspace = m_played.empty() ? ProgramDirectory() / "workspace.json" : Found(m_played);
        m_options.hasMarket = true;
        m_options.stay = true;
    } else {
        m_options.script = Found(m_played);
    }
}

std::variant<Options, int> Manual::Parse(int argc, const char* const* argv)
{
    try {
        m_app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return m_app.exit(error) == 0 ? kClean : kCannotStart;
    }
    TakePlayed();
    for (const CLI::Option* const option : m_marketOptions) {
        m_options.hasMarket = m_options.hasMarket || *option;
    }
    if (!m_securities.empty()) {
        m_options.market.securities = m_securities;
    }
    m_options.form =
        m_asText || (!m_asJson && isatty(STDOUT_FILENO) != 0) ? EventForm::Text : EventForm::Json;
    if (*m_inspect) {
        m_options.inspect = m_inspected.empty() ? ProgramDirectory() / "adsplugins" : m_inspected;
    }
    return m_options;
}

}  // namespace

std::variant<Options, int> ParseOptions(int argc, const char* const* argv)
{
    return Manual().Parse(argc, argv);
}

fs::path StateDirectory()
{
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state && *state == '/') {  // others are to be ignored, by the word of the standard
        return fs::path(state) / "panelry";
    }
    const char* const home = std::getenv("HOME");
    return fs::path(home && *home ? home : "/tmp") / ".local" / "state" / "panelry";
}

}  // namespace panelry::desk
