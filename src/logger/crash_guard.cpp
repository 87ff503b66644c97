#include "logger/crash_guard.h"

#include <signal.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <memory>

#include "logger/log4z/loger_manager.h"

namespace panelry::logger
{

namespace
{

constexpr std::array kFatalSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS};
constexpr std::size_t kStackBytes = 64 * 1024;

std::atomic<log4z::LogerManager*> guarded{nullptr};
std::array<struct sigaction, kFatalSignals.size()> formerActions;
std::unique_ptr<char[]> handlerStack;  // null: the thread had one

void RestoreFormerAction(int signal)
{
    for (std::size_t i = 0; i < kFatalSignals.size(); ++i) {
        if (kFatalSignals[i] == signal) {
            ::sigaction(signal, &formerActions[i], nullptr);
        }
    }
}

// A fault comes again by itself when the handler returns, with its true cause. A signal that was sent
// doesn't, nor one for a call that a filter of the kernel's forbade, nor one for bad memory that nobody has
// touched.
bool ComesAgain(const siginfo_t& info)
{
    const bool isFault = info.si_code > 0 && info.si_signo != SIGSYS;
    return isFault && !(info.si_signo == SIGBUS && info.si_code == BUS_MCEERR_AO);
}

void OnFatalSignal(int signal, siginfo_t* info, void* /*context*/)
{
    const int error = errno;
    if (log4z::LogerManager* const manager = guarded.load()) {
        manager->SaveQueued();
    }
    RestoreFormerAction(signal);
    if (!ComesAgain(*info)) {
        ::raise(signal);
    }
    errno = error;
}

void GiveHandlerAStack()
{
    stack_t current = {};
    ::sigaltstack(nullptr, &current);
    if ((current.ss_flags & SS_DISABLE) == 0) {
        return;
    }
    handlerStack.reset(new char[kStackBytes]);
    stack_t own = {};
    own.ss_sp = handlerStack.get();
    own.ss_size = kStackBytes;
    ::sigaltstack(&own, nullptr);
}

void TakeStackBack()
{
    if (handlerStack) {
        stack_t none = {};
        none.ss_flags = SS_DISABLE;
        ::sigaltstack(&none, nullptr);
        handlerStack.reset();
    }
}

}  // namespace

bool InstallCrashGuard(log4z::LogerManager& manager)
{
    log4z::LogerManager* nobody = nullptr;
    if (!guarded.compare_exchange_strong(nobody, &manager)) {
        return false;
    }
    GiveHandlerAStack();
    struct sigaction action = {};
    action.sa_sigaction = &OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kFatalSignals.size(); ++i) {
        ::sigaction(kFatalSignals[i], &action, &formerActions[i]);
    }
    return true;
}

void RemoveCrashGuard()
{
    if (!guarded.exchange(nullptr)) {
        return;
    }
    for (const int signal : kFatalSignals) {
        struct sigaction current = {};
        ::sigaction(signal, nullptr, &current);
        if (current.sa_sigaction == &OnFatalSignal) {  // otherwise somebody put a handler over ours
            RestoreFormerAction(signal);
        }
    }
    TakeStackBack();
}

}  // namespace panelry::logger
