#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

#include "desk/event_text.h"
#include "desk/output.h"

namespace panelry::desk
{

/// How events are written: one JSON object a line, or lines for people.
enum class EventForm { Json, Text };

/// Keeps what is written to a terminal apart from what is being typed there.
///
/// Threading: any thread. Failures: none.
class Screen
{
public:
    virtual ~Screen() = default;

    /// Ahead of and behind a write; between them nobody else has the terminal.
    virtual void BeginWrite() = 0;
    virtual void EndWrite() = 0;
};

/// Writes what happens, and beside it what a person is to be told.
///
/// Ownership: borrows the file descriptors.
/// Threading: any thread. The time is taken and the line written under one lock, so lines are whole and their
///   times never go back. A reader that stops reading holds up the thread that speaks, until a stop is asked
///   for. The screen is taken under the lock too.
/// Failures: a line that can't be written is dropped; the first one that is dropped because nobody reads is
///   told of. Bytes that aren't UTF-8 are replaced by U+FFFD.
class Announcer
{
public:
    /// `stop` is readable from the moment a stop is asked for.
    Announcer(int events, int complaints, int stop, EventForm form = EventForm::Json);

    /// Who is asked for the terminal from here on; null: nobody. It must stay until it is taken away.
    void SetScreen(Screen* screen);

    /// Writes an event of this moment; see EventJson() and EventText().
    void Say(std::string_view event, const Fields& fields = Fields::object());

    /// Writes `text` as it is, for a person.
    void Tell(const std::string& text);

    /// Tells `text`, which an answer consists of. Who reads JSON gets it as the event "help", too.
    void Explain(const std::string& text);

    /// Tells "where: reason". Who reads JSON gets it as an event, too.
    void Complain(const std::string& where, const std::string& reason);

    /// Milliseconds since the announcer was made: the clock of scripts and of output alike.
    [[nodiscard]] std::chrono::milliseconds Now() const;

private:
    bool Write(Output& output, const std::string& text);

    const EventForm m_form;
    const std::chrono::steady_clock::time_point m_start;

    std::mutex m_lock;  // held over one line; guards the next two
    Output m_events;
    bool m_dropped = false;

    std::mutex m_complaintsLock;  // taken behind the other; guards the next
    Output m_complaints;

    std::mutex m_screenLock;  // taken last; guards the next
    Screen* m_screen = nullptr;
};

}  // namespace panelry::desk
