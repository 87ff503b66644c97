#pragma once

#include <chrono>
#include <optional>

/// Which thread is the application thread, and how others learn that it has come to an end or to a standstill.
namespace panelry::bridge
{

/// Marks the calling thread as the application thread, for as long as the object lives; its end is the thread's
/// last word, and whoever waits for it may join the thread then.
class ApplicationThreadMark
{
public:
    ApplicationThreadMark();
    ~ApplicationThreadMark();
    ApplicationThreadMark(const ApplicationThreadMark&) = delete;
    ApplicationThreadMark& operator=(const ApplicationThreadMark&) = delete;
};

/// Whether the calling thread bears that mark. Any thread.
bool OnApplicationThread();

/// Application thread: it does nothing any more from here on.
void TellThreadHalted();

/// Waits until the application thread has ended, and returns true; false when it stands still instead, or when
/// `patience` is over. Any other thread.
bool AwaitThreadEnd(std::optional<std::chrono::seconds> patience = std::nullopt);

}  // namespace panelry::bridge
