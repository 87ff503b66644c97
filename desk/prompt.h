#pragma once

#include <locale.h>

#include <deque>
#include <filesystem>
#include <mutex>

#include "desk/announcer.h"
#include "desk/completion.h"
#include "desk/line_input.h"

namespace panelry::desk
{

/// The prompt of a terminal: a line that is edited, completed and remembered, and that stays whole when
/// something is written meanwhile.
///
/// Ownership: the terminal of standard input and output, from construction to the end; one at a time. Put it
///   before an announcer as its screen, and take it away before it dies.
/// Threading: the screen's operations on any thread, the rest on one.
/// Failures: a history that can't be read or written is done without. The end of the terminal is the end of
///   input.
class Prompt : public LineInput, public Screen
{
public:
    Prompt(Vocabulary vocabulary, std::filesystem::path history);
    ~Prompt() override;

    /// Are standard input and output a terminal that can be edited on?
    static bool IsPossible();

    [[nodiscard]] int Descriptor() const override { return m_ended ? -1 : 0; }
    void Read() override;
    std::optional<std::string> TakeLine() override;
    [[nodiscard]] int LineNumber() const override { return m_lineNumber; }
    /// The terminal's end-of-file key, on an empty line.
    [[nodiscard]] bool WasEnded() const { return m_ended; }

    void BeginWrite() override;
    void EndWrite() override;

private:
    static void OnLine(char* text);
    static char** OnCompletion(const char* word, int begin, int end);
    void Ask();
    void Remember(const std::string& line) const;

    const Vocabulary m_vocabulary;
    const std::filesystem::path m_history;
    const locale_t m_locale;  // the editor reads and writes UTF-8, whatever the process's locale is by now

    std::mutex m_lock;  // guards the editor, which belongs to nobody's thread, and the next
    bool m_asking = false;

    std::deque<std::string> m_lines;
    bool m_ended = false;
    int m_lineNumber = 0;
};

}  // namespace panelry::desk
