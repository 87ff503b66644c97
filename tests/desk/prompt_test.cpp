#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextCodec>
#include <array>
#include <memory>
#include <utility>

#include "support/test.h"

using namespace panelry::test;

namespace
{

constexpr int kColumns = 80;

// A terminal with the desk on it, and what can be seen there.
class Terminal
{
public:
    // The desk has the stand-in for the panels' library, and its memory in `state`.
    Terminal(const QByteArray& arguments, const QTemporaryDir& state)
    {
        // The prompt reads UTF-8 in the locale C, too.
        const QByteArray command =
            "TERM=vt100 LC_ALL=C QT_QPA_PLATFORM=offscreen XDG_STATE_HOME=" + state.path().toUtf8() +
            " exec " DESK_PROGRAM " --library " FAKE_PANELRY " " + arguments;
        winsize size{.ws_row = 24, .ws_col = kColumns, .ws_xpixel = 0, .ws_ypixel = 0};
        m_process = forkpty(&m_master, nullptr, nullptr, &size);
        if (m_process == 0) {
            execl("/bin/sh", "sh", "-c", command.constData(), nullptr);
            _exit(127);
        }
    }
    ~Terminal()
    {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
        close(m_master);
    }
    Q_DISABLE_COPY(Terminal)

    void Type(const QByteArray& keys) const
    {
        if (write(m_master, keys.constData(), static_cast<std::size_t>(keys.size())) != keys.size()) {
            qFatal("the terminal takes nothing");
        }
    }

    // Reads until a row is, or contains, `text`; false after half a minute.
    bool ShowsRow(const QString& text)
    {
        return WaitFor([&] { return Rows().contains(text); });
    }
    bool Shows(const QString& text)
    {
        return WaitFor([&] { return !Rows().filter(text).isEmpty(); });
    }

    // Reads to the end and gives the exit status, -1 for another end.
    int Finish()
    {
        while (Read()) {
        }
        int status = 0;
        waitpid(std::exchange(m_process, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    QStringList Rows() const
    {
        QStringList rows = m_rows;
        return rows.replaceInStrings(QString(QChar::Null), QString());
    }

private:
    template <class Shown>
    bool WaitFor(Shown shown)
    {
        const QDeadlineTimer deadline(30'000);
        while (!shown() && !deadline.hasExpired()) {
            pollfd terminal{m_master, POLLIN, 0};
            if (poll(&terminal, 1, static_cast<int>(deadline.remainingTime())) > 0 && !Read()) {
                break;
            }
        }
        return shown();
    }

    // What is cut in the middle of a character or a control sequence waits for its rest.
    bool Read()
    {
        static const QRegularExpression end("[@-~]");
        std::array<char, 4096> block{};
        const ssize_t size = read(m_master, block.data(), block.size());
        m_unread += m_decoder->toUnicode(block.data(), static_cast<int>(std::max(size, ssize_t{0})));
        while (!m_unread.isEmpty()) {
            const bool isControl = m_unread[0] == '\033';
            const int last = isControl ? m_unread.indexOf(end, 2) : 0;
            if (last < 0) {
                break;
            }
            if (isControl) {
                Control(m_unread.left(last + 1));
            } else {
                Put(m_unread[0]);
            }
            m_unread.remove(0, last + 1);
        }
        return size > 0;
    }

    QString& Row()
    {
        while (m_rows.size() <= m_row) {
            m_rows << QString();
        }
        return m_rows[m_row];
    }

    void Put(QChar character)
    {
        if (character == '\r') {
            m_column = 0;
        } else if (character == '\n') {
            ++m_row;
        } else if (character == '\b') {
            m_column = std::max(0, m_column - 1);
        } else if (character >= ' ') {
            const int width = character.unicode() >= 0x2E80 ? 2 : 1;
            if (m_column + width > kColumns) {
                ++m_row;
                m_column = 0;
            }
            const QString cells = width == 1 ? QString(character) : QString(character) + QChar(QChar::Null);
            Row() = Row().leftJustified(m_column).replace(m_column, width, cells);
            m_column += width;
        }
    }

    void Control(const QString& sequence)
    {
        const int number = std::max(1, sequence.mid(2, sequence.size() - 3).toInt());
        switch (sequence.back().unicode()) {
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
                Row().truncate(m_column);
                break;
            default:
                break;  // colours and the like
        }
    }

    QStringList m_rows{QString()};  // a wide character is followed by a NUL, so that places are columns
    int m_master = -1;
    int m_process = -1;
    QString m_unread;
    std::unique_ptr<QTextDecoder> m_decoder{QTextCodec::codecForName("UTF-8")->makeDecoder()};
    int m_row = 0;
    int m_column = 0;
};

}  // namespace

/// The prompt, on a terminal.
class PromptTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAreCompletedAndLinesRemembered()
    {
        const QTemporaryDir state;
        const char* const arguments = "- --market --memory --speed 0";
        {
            Terminal terminal(arguments, state);
            terminal.Type("fau\tla\t7");
            QVERIFY(terminal.ShowsRow("desk> fault late 7"));
            terminal.Type("\r");
            QVERIFY(terminal.Shows("fault  late on, 7"));
            terminal.Type("fault late off\r");
            QVERIFY(terminal.Shows("fault  late off"));
            terminal.Type("scenario limit\t\t");  // the two that begin so are listed
            QVERIFY(terminal.Shows("limit-down"));
            terminal.Type("up 60051\t");
            QVERIFY(terminal.ShowsRow("desk> scenario limit-up 600519 "));
            terminal.Type("\x15quit\r");  // Ctrl-U
            QCOMPARE(terminal.Finish(), 0);
        }
        Terminal terminal(arguments, state);
        QVERIFY(terminal.ShowsRow("desk> "));
        terminal.Type("\033[A\033[A");
        QVERIFY(terminal.ShowsRow("desk> fault late off"));
        terminal.Type("\033[A\r");
        QVERIFY(terminal.Shows("fault  late on, 7"));
        terminal.Type("\x04");  // Ctrl-D
        QVERIFY(terminal.Shows("stop  quit"));
        QCOMPARE(terminal.Finish(), 0);
    }

    // The line is longer than the terminal is wide, and the cursor stands in its middle.
    void aLineSurvivesWhatIsWrittenMeanwhile()
    {
        const QTemporaryDir state;
        Terminal terminal("-", state);
        const QByteArray text = "note " + QByteArray("0123456789").repeated(9) + "行情 end";
        QVERIFY(terminal.ShowsRow("desk> "));
        terminal.Type("{\"at\":400,\"note\":\"first news\"}\r" + text + "\033[D\033[D\033[D");
        const QString shown = "desk> " + QString::fromUtf8(text);
        QVERIFY(terminal.Shows("note  first news"));
        QVERIFY(terminal.Shows(shown.mid(80)));
        QVERIFY(terminal.Rows().contains(shown.left(80)));
        terminal.Type("X\r");
        QVERIFY(terminal.Shows("unknown command \"note\""));
        const QStringList rows = terminal.Rows();
        QVERIFY2(rows.contains(shown.mid(80).replace("end", "Xend")), qPrintable(rows.join('\n')));
        QCOMPARE(rows.count(shown.left(80)), 1);
        QCOMPARE(rows.filter("note  first news").size(), 1);
        terminal.Type("quit\r");
        QCOMPARE(terminal.Finish(), 0);
    }

    void eventsAreJsonWhereThatIsWanted()
    {
        const QTemporaryDir state;
        Terminal terminal("- --json", state);
        terminal.Type("funds\r");
        QVERIFY(terminal.Shows("\"where\":\"stdin:1\",\"reason\":\"there is no market"));
        terminal.Type("\x03");  // Ctrl-C
        QVERIFY(terminal.Shows("\"reason\":\"SIGINT\""));
        QCOMPARE(terminal.Finish(), 0);
    }
};

PANELRY_TEST(PromptTest)
#include "prompt_test.moc"
