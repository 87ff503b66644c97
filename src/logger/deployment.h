#pragma once

#include <string>

/// How the library itself uses the logger: the application thread switches it on and off, modules write to
/// it. It stays off without a configuration file.
namespace panelry::logger
{

/// Reads the configuration file (the first time in the process), starts the manager, and puts up the crash
/// guard if it is wanted. Does nothing for an empty file name. In a later life it enables again what the end
/// of the last one disabled. To be called, and ended, on the application thread.
void BeginLogging(const std::string& configFile, bool crashGuard);

/// Writes all lines out and stops the manager, if it runs. Where the old log files can't be cleared the
/// manager goes on until the process ends.
void EndLogging();

/// Writes a module's line to the main logger. A level outside 0 to 6 and a null text write nothing. The text
/// is a format string without arguments: "%%" is a "%", and any other "%" stands as it is.
void WriteModuleText(int level, const char* text);

}  // namespace panelry::logger
