#include "input/fake_hook.h"

#include <algorithm>
#include <chrono>

namespace panelry::test
{

static constexpr std::chrono::seconds kDeadline{60};  // only ever reached by a fault

FakeHook& FakeHook::Instance()
{
    static FakeHook& hook = *new FakeHook;
    return hook;
}

bool FakeHook::WaitFor(const std::function<bool()>& condition)
{
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, kDeadline, condition);
}

void FakeHook::Reset()
{
    const std::lock_guard guard(m_lock);
    m_display = m_answers = m_echoes = m_obeys = true;
    m_runs = m_mostAtOnce = m_wrongStops = 0;
    m_queue.clear();
    m_posted.clear();
}

bool FakeHook::Dispatch(const uiohook_event& event)
{
    std::unique_lock lock(m_lock);
    if (m_up == 0) {
        return false;
    }
    m_queue.push_back(event);
    const std::uint64_t number = ++m_queued;
    m_changed.notify_all();
    return m_changed.wait_for(lock, kDeadline, [&] { return m_dispatched >= number; });
}

int FakeHook::Run()
{
    std::unique_lock lock(m_lock);
    ++m_runs;
    m_mostAtOnce = std::max(m_mostAtOnce, ++m_inside);
    m_changed.notify_all();
    const auto dispatch = [&](uiohook_event event) {
        const dispatcher_t dispatcher = m_dispatcher;
        lock.unlock();
        dispatcher(&event);
        lock.lock();
    };
    int result = UIOHOOK_ERROR_X_OPEN_DISPLAY;
    if (m_display) {
        m_changed.wait(lock, [this] { return m_answers; });
        m_stopAsked = false;
        m_stoppable = true;
        dispatch(MouseEvent(EVENT_HOOK_ENABLED));
        ++m_up;
        m_changed.notify_all();
        for (;;) {
            m_changed.wait(lock, [this] { return (m_stopAsked && m_obeys) || !m_queue.empty(); });
            if (m_queue.empty()) {
                break;
            }
            const uiohook_event event = m_queue.front();
            m_queue.pop_front();
            dispatch(event);
            ++m_dispatched;
            m_changed.notify_all();
        }
        --m_up;
        dispatch(MouseEvent(EVENT_HOOK_DISABLED));
        m_stoppable = false;  // what hook_stop uses is gone
        result = UIOHOOK_SUCCESS;
    }
    --m_inside;
    m_changed.notify_all();
    return result;
}

int FakeHook::Stop()
{
    const std::lock_guard guard(m_lock);
    if (!m_stoppable) {
        ++m_wrongStops;
        return UIOHOOK_FAILURE;
    }
    m_stopAsked = true;
    m_changed.notify_all();
    return UIOHOOK_SUCCESS;
}

void FakeHook::Post(const uiohook_event& event)
{
    if (const std::function<void()> posting = Get(m_posting)) {
        posting();
    }
    const std::lock_guard guard(m_lock);
    m_posted.push_back(event);
    if (m_echoes && m_up > 0) {
        m_queue.push_back(event);
        ++m_queued;
    }
    m_changed.notify_all();
}

}  // namespace panelry::test

using panelry::test::FakeHook;

extern "C" {

void hook_set_dispatch_proc(dispatcher_t dispatcher)
{
    FakeHook::Instance().SetDispatcher(dispatcher);
}

int hook_run()
{
    return FakeHook::Instance().Run();
}

int hook_stop()
{
    return FakeHook::Instance().Stop();
}

void hook_post_event(uiohook_event* const event)
{
    FakeHook::Instance().Post(*event);
}
}
