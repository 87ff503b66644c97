// The desk: a program that plays the host of the panels. See docs/desk.md.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "desk/commands.h"
#include "desk/desk.h"
#include "desk/display.h"
#include "desk/exit_status.h"
#include "desk/inspect.h"
#include "desk/market_console.h"
#include "desk/options.h"
#include "desk/stop_signals.h"

namespace desk = panelry::desk;

namespace
{

// Otherwise the first file that is opened would become standard input or output.
void OpenStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) {
            return;
        }
    }
}

int Complain(const std::string& text)
{
    std::fprintf(stderr, "panelry-desk: %s\n", text.c_str());
    return desk::kCannotStart;
}

/// Hears the market for the announcer.
class MarketEar : public desk::MarketListener
{
public:
    MarketEar(desk::Announcer& announcer, bool tellsRequests)
        : m_announcer(announcer), m_tellsRequests(tellsRequests)
    {
    }

    void OnMarketEvent(const std::string& event, const nlohmann::ordered_json& fields) override
    {
        if (m_tellsRequests || event != "request") {
            m_announcer.Say(event, fields);
        }
    }

private:
    desk::Announcer& m_announcer;
    const bool m_tellsRequests;
};

desk::Script ReadScriptFile(const std::filesystem::path& path)
{
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path)) {
        throw std::runtime_error("can't read the script " + path.string());
    }
    return desk::ReadScript(file, path.string());
}

desk::MarketHost::Settings MarketSettings(const desk::Options& options, const desk::MarketWish& wish)
{
    const std::filesystem::path program = desk::ProgramDirectory();
    desk::MarketHost::Settings settings;
    settings.listing = wish.securities.value_or(program / "securities.json");
    settings.opening = wish.accounts.value_or(program / "accounts.json");
    if (!options.keepsNothing) {
        settings.store = wish.state.value_or(desk::StateDirectory() / "desk.sqlite");
        std::filesystem::create_directories(std::filesystem::absolute(settings.store).parent_path());
    }
    settings.afresh = options.afresh;
    settings.tape = options.tape.value_or("");
    settings.seed = wish.seed.value_or(1);
    settings.changesPerSecond = wish.rate.value_or(200);
    settings.speed = wish.speed.value_or(1);
    settings.startOfDay = wish.start.value_or(*desk::ParseTimeOfDay("09:31"));
    return settings;
}

void SayWorkspace(const desk::Workspace& workspace, desk::Announcer& announcer)
{
    desk::Fields panels = desk::Fields::array();
    for (const desk::Workspace::Panel& panel : workspace.panels) {
        panels.push_back(panel.id);
    }
    announcer.Say("workspace", {{"title", workspace.title}, {"panels", std::move(panels)}});
}

void SayMarket(desk::MarketHost& host, const desk::MarketHost::Settings& settings, desk::Announcer& announcer)
{
    const desk::Listing& listing = host.Market().Securities();
    const desk::MarketTime now = host.Market().Now();
    announcer.Say("market", {{"securities", listing.securities.size()},
                             {"rules", listing.rules},
                             {"rules_date", listing.rulesDate},
                             {"state", settings.store.string()},
                             {"seed", settings.seed},
                             {"day", now.day},
                             {"time", desk::ClockText(now.ofDay)}});
}

/// Against the market, of which the file alone knows nothing; throws what is wrong.
void CheckFeeds(const std::filesystem::path& file, const std::vector<desk::Feed>& feeds,
                const desk::MarketConsole& console)
{
    for (std::size_t i = 0; i < feeds.size(); ++i) {
        if (const std::string problem = console.CheckFeed(feeds[i]); !problem.empty()) {
            throw std::runtime_error(file.string() + ": \"feeds\", entry " + std::to_string(i + 1) + ": " +
                                     problem);
        }
    }
}

/// What is played, read whole before anything starts.
struct Program {
    explicit Program(const desk::Options& options)
    {
        if (options.workspace) {
            workspace = desk::ReadWorkspace(*options.workspace);
        }
        if (const auto file = workspace ? workspace->script : options.script) {
            script = ReadScriptFile(*file);
        }
    }

    std::optional<desk::Workspace> workspace;
    desk::Script script;
};

desk::DeskSettings DeskSettingsOf(const desk::Options& options, const Program& program,
                                  desk::MarketHost* market)
{
    desk::DeskSettings settings;
    settings.untilInputEnds = !options.workspace && !options.script;
    settings.stay = options.stay;
    settings.length = options.length;
    settings.market = market;
    settings.history = desk::StateDirectory() / "desk_history";
    if (market) {
        settings.vocabulary.codes = desk::CodeWords(market->Market().Securities());
    }
    if (program.workspace) {
        settings.feeds = program.workspace->feeds;
        for (const desk::Workspace::Panel& panel : program.workspace->panels) {
            settings.vocabulary.panels.push_back(std::to_string(panel.id));
        }
    }
    return settings;
}

/// Everything that is to be played, in the order in which what has one time is.
void Schedule(const desk::Options& options, Program& program, desk::Desk& player)
{
    constexpr std::chrono::milliseconds kAtOnce{0};
    std::vector<desk::TimedAct> acts;
    for (const desk::MarketCommand& command : options.beginnings) {
        acts.push_back({kAtOnce, desk::MarketAct{command, "command line"}});
    }
    if (program.workspace) {
        player.SetTitles(program.workspace->PanelTitles());
        for (desk::Message& message : program.workspace->Openings()) {
            acts.push_back({kAtOnce, std::move(message)});
        }
    }
    player.SetTitles(options.titles);
    player.Schedule(std::move(acts));
    player.Schedule(std::move(program.script.acts));
}

int Play(const desk::Options& options)
{
    Program program(options);
    if (!desk::PrepareDisplay()) {
        return desk::kCannotStart;
    }
    const desk::StopSignals signals;  // before the library, which may bring threads
    const desk::HostLibrary library(options.library);
    desk::Announcer announcer(STDOUT_FILENO, STDERR_FILENO, signals.Descriptor(), options.form);
    MarketEar ear(announcer, options.tellsRequests);
    std::optional<desk::MarketHost> market;  // outlives the panels
    if (options.hasMarket) {
        const desk::MarketHost::Settings settings = MarketSettings(
            options,
            desk::Merged(options.market, program.workspace ? program.workspace->market : desk::MarketWish()));
        market.emplace(settings);
        if (program.workspace) {
            CheckFeeds(*options.workspace, program.workspace->feeds, desk::MarketConsole(*market, announcer));
        }
        SayMarket(*market, settings, announcer);
        market->SetListener(&ear);
    }
    if (program.workspace) {
        SayWorkspace(*program.workspace, announcer);
    }
    desk::Desk player(library, announcer, signals,
                      DeskSettingsOf(options, program, market ? &*market : nullptr));
    for (const desk::Complaint& complaint : program.script.complaints) {
        announcer.Complain(complaint.where, complaint.reason);
    }
    Schedule(options, program, player);
    player.Run();
    return program.script.complaints.empty() && !player.HasFailed() ? desk::kClean : desk::kFaultsFound;
}

int Inspect(const std::filesystem::path& directory)
{
    const desk::Inspection inspection = desk::Inspect(directory);
    desk::Print(inspection, std::cout);
    return inspection.HasFaults() ? desk::kFaultsFound : desk::kClean;
}

}  // namespace

int main(int argc, char* argv[])
{
    OpenStandardStreams();
    signal(SIGPIPE, SIG_IGN);  // a reader that goes away ends the desk through its loop
    signal(SIGTTIN, SIG_IGN);  // in the background nothing can be typed: that must not stop the panels
    try {
        const auto options = desk::ParseOptions(argc, argv);
        if (const int* const status = std::get_if<int>(&options)) {
            return *status;
        }
        const auto& wanted = std::get<desk::Options>(options);
        return wanted.inspect ? Inspect(*wanted.inspect) : Play(wanted);
    } catch (const std::exception& error) {
        return Complain(error.what());
    }
}
