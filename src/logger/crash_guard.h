#pragma once

namespace log4z
{
class LogerManager;
}

/// Has queued lines written when a fatal signal (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS) ends the
/// process. Whoever handled the signal before gets it afterwards: the process dies with the same signal.
///
/// Threading: install and remove on one thread, which also gets a stack of its own for the handler.
/// Limits: a thread that crashes while it holds a lock of the worker's (the heap's, for one) leaves it stuck;
///   after two seconds without progress the process dies without the rest. An overflow of the stack is
///   handled on the installing thread alone.
namespace panelry::logger
{

/// False when the guard stands already. The manager must outlive the guard.
bool InstallCrashGuard(log4z::LogerManager& manager);
void RemoveCrashGuard();

}  // namespace panelry::logger
