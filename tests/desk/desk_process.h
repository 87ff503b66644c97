#pragma once

#include <signal.h>

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QTemporaryDir>
#include <array>
#include <string>

namespace panelry::test
{

/// A run of the real desk, by default with the stand-in for the panels' library and without a display.
class DeskProcess
{
public:
    DeskProcess();

    /// Starts it with arguments that are parted by blanks; `library` empty: without --library.
    void Start(const QString& arguments, const QString& library = FAKE_PANELRY,
               const QString& program = DESK_PROGRAM);

    /// Reads on until a line holds `part`; lines that a call has passed are past for the next one. False when
    /// the program ends or half a minute goes by without it.
    bool SaysNext(const QByteArray& part);
    /// The same from the first line on.
    bool Says(const QByteArray& part)
    {
        m_heard = 0;
        return SaysNext(part);
    }
    /// The line that SaysNext() has just found.
    const QByteArray& Heard() const { return texts[m_heard - 1]; }

    void Type(const QByteArray& text) { process.write(text); }
    void Signal(int signal) const { kill(static_cast<pid_t>(process.processId()), signal); }

    /// Reads to the end of the program and returns its exit status, -1 if it was killed or doesn't end.
    int Finish();

    /// "event" or "event:reason-or-text-or-note" of the lines so far.
    QStringList Story() const;

    /// The program, with signals as a shell leaves them: a nohup around the tests is no matter to it.
    class Program : public QProcess
    {
    public:
        bool ignoresHangUp = false;

    protected:
        void setupChildProcess() override;
    };

    Program process;
    QTemporaryDir memory;  ///< where it remembers
    QList<QJsonObject> lines;
    QList<QByteArray> texts;  ///< of the same, as they were written
    QStringList brokenLines;  ///< output that is no JSON object
    QString errors;           ///< standard error, after Finish(), if it has a channel of its own

private:
    void TakeLines();

    int m_heard = 0;  // lines that SaysNext has passed
};

/// A pipe; what is read from it doesn't wait.
class Pipe
{
public:
    Pipe();
    ~Pipe();
    Q_DISABLE_COPY(Pipe)

    std::string TakeAll() const;
    bool IsFull() const;
    QString WritersPath() const { return QString("/proc/self/fd/%1").arg(ends[1]); }

    std::array<int, 2> ends{};
};

/// Writes a file in `directory` and returns its path.
QString WriteFile(const QTemporaryDir& directory, const QString& name, const QByteArray& content);

}  // namespace panelry::test
