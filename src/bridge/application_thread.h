#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace panelry::bridge
{

/// The whole life of the application thread: sets up the GUI, loads the modules, runs the event loop until
/// "quit", and takes everything down again. Its arguments are those of the call that started it; none is
/// read.
///
/// Failures: a malformed configuration file or an unreadable plug-in directory leaves as an exception, which
///   nobody catches: the process ends.
void ApplicationThreadMain(std::int32_t type, std::int32_t id, std::shared_ptr<const std::string> text);

}  // namespace panelry::bridge
