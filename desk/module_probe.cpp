#include "desk/module_probe.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <system_error>

#include "hosting/module_library.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

using Json = nlohmann::json;

constexpr std::chrono::seconds kLongestLoad{20};

// ---- the process that loads

Json Offers(const std::vector<ModuleInfo>& modules)
{
    Json offers = Json::array();
    for (const ModuleInfo& info : modules) {
        offers.push_back({{"id", info.module_id}, {"title", info.module_title}});
    }
    return offers;
}

Json LoadModule(const fs::path& path, bool askOffers)
{
    Json result = Json::object();
    // Symbols are bound late by the panels' library, so a missing one doesn't keep a module from loading.
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const std::string whole = dlerror();
        handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (!handle) {
            return {{"skipped", "doesn't load: " + whole}};
        }
        result["missing"] = whole;
    }
    for (const char* const name : {"CreateModule", "GetModuleInfo"}) {
        if (!dlsym(handle, name)) {
            return {{"skipped", std::string(name) + " isn't exported"}};
        }
    }
    if (!askOffers) {
        return result;
    }
    const auto getModuleInfo = reinterpret_cast<GetModuleInfoFunction>(dlsym(handle, "GetModuleInfo"));
    const std::vector<ModuleInfo>* const modules = getModuleInfo();
    if (!modules) {
        return {{"skipped", "GetModuleInfo returns null"}};
    }
    if (modules->empty()) {
        return {{"skipped", "GetModuleInfo returns an empty vector"}};
    }
    result["offers"] = Offers(*modules);
    return result;
}

void WriteWhole(int descriptor, const std::string& text)
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) {
            return;
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
}

[[noreturn]] void RunLoader(const fs::path& path, const fs::path& hostDirectory, bool askOffers, int result)
{
    const rlimit noCore{};
    setrlimit(RLIMIT_CORE, &noCore);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::error_code ignored;
    fs::current_path(hostDirectory, ignored);
    const Json found = LoadModule(path, askOffers);
    WriteWhole(result, found.dump(-1, ' ', false, Json::error_handler_t::replace));
    _exit(0);
}

// ---- the process that asks

/// What is written to `descriptor` until its end, or until time is up.
std::string ReadAll(int descriptor, bool& timedOut)
{
    const auto deadline = std::chrono::steady_clock::now() + kLongestLoad;
    std::string text;
    std::array<char, 4096> block{};
    while (true) {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd readable{.fd = descriptor, .events = POLLIN, .revents = 0};
        timedOut = rest.count() <= 0 || poll(&readable, 1, static_cast<int>(rest.count())) == 0;
        if (timedOut) {
            return text;
        }
        const ssize_t size = read(descriptor, block.data(), block.size());
        if (size == 0 || (size < 0 && errno != EINTR)) {
            return text;
        }
        text.append(block.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    }
}

std::string Ending(int status)
{
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return "loading it ends the process: signal " + std::to_string(number) + ", " + sigdescr_np(number);
    }
    return "loading it ends the process, with exit status " + std::to_string(WEXITSTATUS(status));
}

ModuleProbe FromText(const std::string& text)
{
    const Json found = Json::parse(text);
    ModuleProbe probe;
    probe.skipped = found.value("skipped", "");
    probe.missing = found.value("missing", "");
    for (const Json& offer : found.value("offers", Json::array())) {
        probe.offers.push_back({offer.at("id").get<std::uint32_t>(), offer.at("title").get<std::string>()});
    }
    return probe;
}

[[noreturn]] void ThrowErrno(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

ModuleProbe ProbeModule(const fs::path& path, const fs::path& hostDirectory, bool askOffers)
{
    int ends[2];
    if (pipe(ends) != 0) {
        ThrowErrno("pipe");
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        ThrowErrno("fork");
    }
    if (child == 0) {
        close(ends[0]);
        RunLoader(path, hostDirectory, askOffers, ends[1]);
    }
    close(ends[1]);
    bool timedOut = false;
    const std::string text = ReadAll(ends[0], timedOut);
    close(ends[0]);
    if (timedOut) {
        kill(child, SIGKILL);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    ModuleProbe probe;
    if (timedOut) {
        probe.fatal = "loading it doesn't come back within " + std::to_string(kLongestLoad.count()) + " s";
    } else if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && !text.empty()) {
        probe = FromText(text);
    } else {
        probe.fatal = Ending(status);
    }
    return probe;
}

}  // namespace panelry::desk
