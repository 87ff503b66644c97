// The desk: a program that plays the host of the panels. See docs/desk.md.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>

#include "desk/demo_host.h"
#include "desk/desk.h"
#include "desk/display.h"
#include "desk/exit_status.h"
#include "desk/inspect.h"
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

int Play(const desk::Options& options)
{
    desk::Script script;
    if (!options.onlyTyped) {
        std::ifstream file(options.script);
        if (!file || std::filesystem::is_directory(options.script)) {
            return Complain("can't read the script " + options.script.string());
        }
        script = desk::ReadScript(file, options.script.string());
    }
    for (const std::string& complaint : script.complaints) {
        std::fprintf(stderr, "%s\n", complaint.c_str());
    }
    if (!desk::PrepareDisplay()) {
        return desk::kCannotStart;
    }
    const desk::StopSignals signals;  // before the library, which may bring threads
    const desk::HostLibrary library(options.library);
    std::optional<desk::DemoHost> services;  // outlives the panels
    if (options.market) {
        services.emplace(*options.market);
    }
    desk::Announcer announcer(STDOUT_FILENO, STDERR_FILENO, signals.Descriptor());
    desk::Desk player(library, announcer, signals,
                      {.untilInputEnds = options.onlyTyped,
                       .stay = options.stay,
                       .services = services ? &*services : nullptr});
    player.SetTitles(options.titles);
    player.Schedule(std::move(script.acts));
    player.Run();
    return script.complaints.empty() ? desk::kClean : desk::kFaultsFound;
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
