#pragma once

#include <QThread>

namespace panelry
{

/// Marks a stretch of the application thread in which foreign code (host or module) may run and come back.
///
/// A teardown in the middle of such a stretch would delete objects that are still on the stack; whoever tears
/// down asks Busy() first, and tries again kRetryMs later. Nested event loops count too: a module that runs a
/// dialog has its own frames below.
/// Threading: application thread only.
class DispatchScope
{
public:
    DispatchScope() { ++s_depth; }
    ~DispatchScope() { --s_depth; }
    DispatchScope(const DispatchScope&) = delete;
    DispatchScope& operator=(const DispatchScope&) = delete;

    static constexpr int kRetryMs = 10;
    static bool Busy() { return s_depth > 0 || QThread::currentThread()->loopLevel() > 1; }

private:
    static inline int s_depth = 0;
};

}  // namespace panelry
