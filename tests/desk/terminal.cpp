#include "desk/terminal.h"

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QTextCodec>
#include <array>
#include <cstdlib>
#include <vector>

namespace panelry::test
{

namespace
{

constexpr int kPatienceMs = 30000;
constexpr int kColumns = 80;

}  // namespace

Terminal::~Terminal()
{
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    if (m_master >= 0) {
        close(m_master);
    }
}

void Terminal::Start(const QStringList& arguments, const QString& stateDirectory)
{
    std::vector<QByteArray> words{DESK_PROGRAM, "--library", FAKE_PANELRY};
    for (const QString& argument : arguments) {
        words.push_back(argument.toUtf8());
    }
    std::vector<char*> pointers;
    for (QByteArray& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const QByteArray state = stateDirectory.toUtf8();
    winsize size{.ws_row = 24, .ws_col = kColumns, .ws_xpixel = 0, .ws_ypixel = 0};
    m_process = forkpty(&m_master, nullptr, nullptr, &size);
    if (m_process == 0) {
        setenv("TERM", "vt100", 1);
        setenv("LC_ALL", "C", 1);  // the prompt reads UTF-8 all the same
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("XDG_STATE_HOME", state.constData(), 1);
        execv(DESK_PROGRAM, pointers.data());
        _exit(127);
    }
}

void Terminal::Type(const QByteArray& keys) const
{
    if (write(m_master, keys.constData(), static_cast<std::size_t>(keys.size())) != keys.size()) {
        qFatal("the terminal takes nothing");
    }
}

bool Terminal::WaitFor(const QString& text, bool part)
{
    const QDeadlineTimer deadline(kPatienceMs);
    const auto shown = [&] {
        const QStringList rows = Rows();
        return part ? !rows.filter(text).isEmpty() : rows.contains(text);
    };
    while (!shown() && !deadline.hasExpired()) {
        pollfd terminal{m_master, POLLIN, 0};
        if (poll(&terminal, 1, static_cast<int>(deadline.remainingTime())) > 0 && !Read()) {
            break;
        }
    }
    return shown();
}

int Terminal::Finish()
{
    while (Read()) {
    }
    int status = 0;
    waitpid(std::exchange(m_process, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// What is cut in the middle of a character or a control sequence waits for its rest.
bool Terminal::Read()
{
    std::array<char, 4096> block{};
    const ssize_t size = read(m_master, block.data(), block.size());
    if (size <= 0) {
        return false;
    }
    m_unread.append(block.data(), static_cast<int>(size));
    QTextCodec* const codec = QTextCodec::codecForName("UTF-8");
    while (!m_unread.isEmpty()) {
        if (m_unread.startsWith('\033')) {
            int end = 2;
            while (end < m_unread.size() && static_cast<unsigned char>(m_unread[end]) < '@') {
                ++end;
            }
            if (end >= m_unread.size()) {
                return true;
            }
            Control(m_unread.left(end + 1));
            m_unread.remove(0, end + 1);
            continue;
        }
        const auto first = static_cast<unsigned char>(m_unread[0]);
        const int length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if (m_unread.size() < length) {
            return true;
        }
        Put(codec->toUnicode(m_unread.left(length)).at(0));
        m_unread.remove(0, length);
    }
    return true;
}

QStringList Terminal::Rows() const
{
    QStringList rows = m_rows;
    return rows.replaceInStrings(QString(QChar::Null), QString());
}

void Terminal::Put(QChar character)
{
    if (character == QLatin1Char('\r')) {
        m_column = 0;
    } else if (character == QLatin1Char('\n')) {
        ++m_row;
    } else if (character == QLatin1Char('\b')) {
        m_column = std::max(0, m_column - 1);
    } else if (character.unicode() >= ' ') {
        const int width = character.unicode() >= 0x2E80 ? 2 : 1;
        if (m_column + width > kColumns) {
            ++m_row;
            m_column = 0;
        }
        while (m_rows.size() <= m_row) {
            m_rows << QString();
        }
        const QString cells = width == 1 ? QString(character) : QString(character) + QChar(QChar::Null);
        m_rows[m_row] = m_rows[m_row].leftJustified(m_column).replace(m_column, width, cells);
        m_column += width;
    }
    while (m_rows.size() <= m_row) {
        m_rows << QString();
    }
}

void Terminal::Control(const QByteArray& sequence)
{
    const int number = std::max(1, sequence.mid(2, sequence.size() - 3).toInt());
    switch (sequence.back()) {
        case 'A':
            m_row = std::max(0, m_row - number);
            break;
        case 'C':
            m_column += number;
            break;
        case 'D':
            m_column = std::max(0, m_column - number);
            break;
        case 'J':
            m_rows = m_rows.mid(0, m_row + 1);
            [[fallthrough]];
        case 'K':
            m_rows[m_row].truncate(m_column);
            break;
        default:
            break;  // colours and the like
    }
}

}  // namespace panelry::test
