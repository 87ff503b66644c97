#pragma once

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QTemporaryDir>
#include <array>
#include <initializer_list>
#include <string>

namespace panelry::test
{

/// A run of the real desk, by default with the stand-in for the panels' library and without a display.
class DeskProcess
{
public:
    DeskProcess();

    /// Starts it; `library` empty: without --library.
    void Start(QStringList arguments, const QString& library = QStringLiteral(FAKE_PANELRY),
               const QString& program = QStringLiteral(DESK_PROGRAM));

    /// Reads until there is a line whose `key` is `value`; false when the program ends or half a minute goes
    /// by without it.
    bool WaitFor(const char* key, const QString& value);

    /// Reads on until a line holds `part`; lines that a call has passed are past for the next one.
    bool SaysNext(const QByteArray& part);
    /// The line that SaysNext() has just found.
    const QByteArray& Heard() const { return texts[m_heard - 1]; }

    void Type(const char* text) { process.write(text); }

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
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    std::string TakeAll() const;
    bool IsFull() const;
    QString WritersPath() const { return QStringLiteral("/proc/self/fd/%1").arg(ends[1]); }

    std::array<int, 2> ends{};
};

QString Text(const char* utf8);
QStringList Texts(std::initializer_list<const char*> utf8);

/// Writes a file in `directory` and returns its path.
QString WriteFile(const QTemporaryDir& directory, const QString& name, const QByteArray& content);

}  // namespace panelry::test
