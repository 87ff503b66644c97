#pragma once

#include <QObject>
#include <functional>

namespace panelry
{

/// Calls a function in the thread in which it was made, when another thread asks for it.
///
/// What the other thread has to say stands elsewhere, under a lock: the event that crosses carries nothing.
///
/// Ownership: a plain object. It may be destroyed in its own call; calls that are on their way are dropped with it.
/// Threading: Post() on any thread, as long as the object lives; all else in the thread that made it.
class WakeUp : public QObject
{
public:
    explicit WakeUp(std::function<void()> call);

    /// One call follows for each.
    void Post();

    bool event(QEvent* event) override;

private:
    const std::function<void()> m_call;
};

}  // namespace panelry
