// A library with the logger in it, for a program that loads it while it runs, as hosts do.

#include "logger/deployment.h"
#include "logger/log.h"

using namespace panelry::logger;

extern "C" __attribute__((visibility("default"))) void BeginAndWrite(const char* configFile, int lines)
{
    BeginLogging(configFile, true);
    const Logger log;
    for (int i = 0; i < lines; ++i) {
        log.Write(log4z::Info, i);
    }
}
