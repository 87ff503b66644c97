#include "desk/prompt.h"

#include <editline/readline.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <utility>

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

constexpr char kPrompt[] = "desk> ";
constexpr int kMostRemembered = 1000;
constexpr int kUsualWidth = 80;

Prompt* current = nullptr;            // the editor's callbacks carry no context
std::vector<std::string> candidates;  // of the completion in progress, under the prompt's lock
std::size_t nextCandidate = 0;

/// The locale of this thread, for as long as the object lives.
class ThreadLocale
{
public:
    explicit ThreadLocale(locale_t locale) : m_before(uselocale(locale)) {}
    ~ThreadLocale() { uselocale(m_before); }
    ThreadLocale(const ThreadLocale&) = delete;
    ThreadLocale& operator=(const ThreadLocale&) = delete;

private:
    const locale_t m_before;
};

int TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

/// How many rows below the prompt's the cursor stands.
int CursorRow()
{
    const int width = TerminalWidth();
    const char* text = rl_line_buffer;
    const char* const cursor = text + rl_point;
    std::mbstate_t state{};
    int row = 0;
    int column = static_cast<int>(std::strlen(kPrompt));
    while (text < cursor) {
        wchar_t character = 0;
        const std::size_t size =
            std::mbrtowc(&character, text, static_cast<std::size_t>(cursor - text), &state);
        const bool isWhole = size != 0 && size <= static_cast<std::size_t>(cursor - text);
        text += isWhole ? size : 1;
        const int columns = isWhole ? std::max(wcwidth(character), 0) : 1;
        if (column + columns > width) {
            ++row;
            column = 0;
        }
        column += columns;
    }
    return row + column / width;  // behind a full row the cursor stands on the next
}

char* NextCandidate(const char* /*word*/, int state)
{
    if (state == 0) {
        nextCandidate = 0;
    }
    return nextCandidate < candidates.size() ? strdup(candidates[nextCandidate++].c_str()) : nullptr;
}

}  // namespace

Prompt::Prompt(Vocabulary vocabulary, fs::path history)
    : m_vocabulary(std::move(vocabulary)),
      m_history(std::move(history)),
      m_locale(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
{
    static char name[] = "panelry-desk";
    static char breaks[] = " \t";
    const ThreadLocale locale(m_locale);
    current = this;
    rl_readline_name = name;
    rl_catch_signals = 0;  // they come by descriptor
    rl_initialize();
    rl_basic_word_break_characters = breaks;
    rl_attempted_completion_function = &Prompt::OnCompletion;
    using_history();
    stifle_history(kMostRemembered);
    read_history(m_history.c_str());
    Ask();
}

Prompt::~Prompt()
{
    {
        const std::lock_guard guard(m_lock);
        const ThreadLocale locale(m_locale);
        if (std::exchange(m_asking, false)) {
            (void)!write(STDOUT_FILENO, "\r\033[J", 4);
        }
        rl_callback_handler_remove();
        clear_history();
        current = nullptr;
    }
    freelocale(m_locale);
}

bool Prompt::IsPossible()
{
    const char* const terminal = std::getenv("TERM");
    return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && terminal && *terminal &&
           std::strcmp(terminal, "dumb") != 0;
}

void Prompt::Ask()
{
    m_asking = true;
    rl_callback_handler_install(kPrompt, &Prompt::OnLine);
    rl_point = 0;  // until a key comes it tells of the line before
}

void Prompt::Read()
{
    const std::lock_guard guard(m_lock);
    const ThreadLocale locale(m_locale);
    pollfd terminal{STDIN_FILENO, POLLIN, 0};
    if (poll(&terminal, 1, 0) > 0 && (terminal.revents & POLLIN) == 0) {
        m_ended = true;  // it hung up: the editor wouldn't notice
        return;
    }
    rl_callback_read_char();
    if (!m_asking && !m_ended) {
        Ask();
    }
}

std::optional<std::string> Prompt::TakeLine()
{
    if (m_lines.empty()) {
        return std::nullopt;
    }
    std::string line = std::move(m_lines.front());
    m_lines.pop_front();
    ++m_lineNumber;
    return line;
}

// Inside the editor, and so under the lock.
void Prompt::OnLine(char* text)
{
    current->m_asking = false;
    if (!text) {
        current->m_ended = true;
        std::putchar('\n');
        std::fflush(stdout);
        return;
    }
    current->m_lines.emplace_back(text);
    std::free(text);
    current->Remember(current->m_lines.back());
}

void Prompt::Remember(const std::string& line) const
{
    const HIST_ENTRY* const last =
        history_length > 0 ? history_get(history_base + history_length - 1) : nullptr;
    if (line.find_first_not_of(" \t") == std::string::npos || (last && last->line == line)) {
        return;
    }
    add_history(line.c_str());
    std::error_code ignored;
    fs::create_directories(m_history.parent_path(), ignored);
    write_history(m_history.c_str());
}

char** Prompt::OnCompletion(const char* word, int /*begin*/, int end)
{
    rl_attempted_completion_over = 1;  // no file names
    candidates =
        Completions(std::string_view(rl_line_buffer, static_cast<std::size_t>(end)), current->m_vocabulary);
    return candidates.empty() ? nullptr : rl_completion_matches(word, &NextCandidate);
}

void Prompt::BeginWrite()
{
    m_lock.lock();
    if (m_asking) {
        const ThreadLocale locale(m_locale);
        const int row = CursorRow();
        const std::string clear = (row > 0 ? "\033[" + std::to_string(row) + 'A' : "") + "\r\033[J";
        (void)!write(STDOUT_FILENO, clear.data(), clear.size());
    }
}

void Prompt::EndWrite()
{
    if (m_asking) {
        const ThreadLocale locale(m_locale);
        rl_resize_terminal();
        rl_forced_update_display();
    }
    m_lock.unlock();
}

}  // namespace panelry::desk
