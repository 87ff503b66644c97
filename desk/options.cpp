#include "desk/options.h"

#include <CLI/CLI.hpp>
#include <vector>

#include "desk/exit_status.h"
#include "desk/host_library.h"

namespace panelry::desk
{

namespace
{

constexpr char kOnlyTyped[] = "-";

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

}  // namespace

std::variant<Options, int> ParseOptions(int argc, const char* const* argv)
{
    Options options;
    options.library = DefaultLibrary();
    options.script = ProgramDirectory() / "demo.jsonl";
    std::filesystem::path inspected;
    std::filesystem::path market;

    CLI::App app(
        "Plays a trading client: loads the panels' library, sends it the messages of a script, and says "
        "on standard output what it hears.");
    app.set_version_flag("--version", PANELRY_DESK_VERSION);
    app.add_option("script", options.script,
                   "JSON Lines to play; \"-\": only what is typed (default: demo.jsonl "
                   "beside the program)");
    app.add_option("--library", options.library, "the panels' library (default: beside the program)");
    app.add_option_function<std::vector<std::string>>(
           "--name",
           [&options](const std::vector<std::string>& names) {
               for (const std::string& name : names) {
                   if (!AddTitle(name, options.titles)) {
                       throw CLI::ValidationError("--name", "\"" + name + "\" isn't ID=TITLE");
                   }
               }
           },
           "a panel's title; may be repeated")
        ->type_name("ID=TITLE")
        ->allow_extra_args(false);
    app.add_flag("--stay", options.stay, "go on after the script until \"quit\" or a signal");
    CLI::Option* const trades =
        app.add_option("--market", market,
                       "give the panels a quote and a trade side: the market in FILE (default: "
                       "demo_market.json beside the program)")
            ->type_name("FILE")
            ->expected(0, 1);
    CLI::Option* const inspect =
        app.add_option(
               "--inspect", inspected,
               "look at the module libraries in DIR (default: adsplugins beside the program) and at the "
               "settings of its host, tell what is wrong with them, and play nothing")
            ->type_name("DIR")
            ->expected(0, 1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kClean : kCannotStart;
    }
    options.onlyTyped = options.script == kOnlyTyped;
    if (*inspect) {
        options.inspect = inspected.empty() ? ProgramDirectory() / "adsplugins" : inspected;
    }
    if (*trades) {
        options.market = market.empty() ? ProgramDirectory() / "demo_market.json" : market;
    }
    return options;
}

}  // namespace panelry::desk
