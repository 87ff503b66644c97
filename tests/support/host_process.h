#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace panelry::test
{

/// The command that sends {"operate":VERB, and the keys behind it}, given without blanks.
QString Operate(int id, const char* verb, const char* keys = "");
/// The command that makes a module of tests/modules/reporter.cpp obey.
QString Tell(int id, const char* order);

/// What another program prints, without the blanks around it.
QString OutputOf(const QString& program, const QStringList& arguments);

/// The host program of the contract tests (tests/contract/contract_host.cpp) in a process and a folder of its
/// own. The folder starts with the program alone; the test adds other module libraries and configuration, then
/// calls Start(). Every wait has a deadline, far beyond what a slow machine takes, and ends early if the host
/// dies.
class HostProcess
{
public:
    /// An id of the test modules that stands behind Settle().
    static constexpr int kMarkerId = 1009;

    HostProcess();
    ~HostProcess();

    /// Links a library of the tests into the plug-in directory, as "<name>.so" or under the given file name.
    void AddModules(const QString& name, const QString& fileName = QString()) const;
    /// Writes a file, making its folder; the path is relative to the host's folder.
    void Write(const QString& path, const QByteArray& content) const;
    /// Sets an environment variable of the host.
    void Set(const QString& variable, const QString& value);
    QString Folder() const { return m_folder.path(); }
    qint64 Id() const { return m_process.processId(); }

    /// Links the reporter library and starts the host.
    bool Start(const QStringList& arguments = {});
    /// Init with the providers 16 and 32 and the callback, without fonts; back
    /// when the panels are running.
    bool StartAndInit();

    /// Sends a command line to the host; "wait TEXT" waits for a line with that text. False if none comes.
    bool Do(const QString& command);
    bool Do(const QStringList& commands);

    /// Waits for a line that contains `needle`, behind the last one that was waited for. Null when none came.
    QString Wait(const QString& needle);
    /// Waits until the panels have done all that was sent before; the lines since the last wait, without
    /// those that the waiting itself brought about.
    QStringList Settle();
    /// The same lines without those of a panel's making, which every panel has.
    QStringList SettleBriefly();
    /// What the modules of `id` answer to a question ("ask ..."), see tests/modules/reporter.cpp.
    QString Ask(int id, const QString& question);

    /// Waits until the library has said that it has no hook for keys and mouse. No other wait sees that line.
    bool SaysThatThereIsNoHook();

    /// Sends the commands and then "exit"; true if the process ends by itself and with this status. A
    /// sanitizer that found something makes it another one.
    bool End(const QStringList& commands, int status = 0);
    /// Waits for the end of the process; true if a signal ends it.
    bool Dies();
    /// The number of the signal that ended the host, or its exit status.
    int Status() const { return m_process.exitCode(); }
    QString Errors() const { return QString::fromUtf8(m_errors); }
    /// What a failed wait leaves to look at.
    QByteArray Story() const;

private:
    bool ReadMore(int deadlineMs);
    bool Find(const QString& needle);
    QString Await(const QString& needle, bool nudge);

    QTemporaryDir m_folder;
    QProcess m_process;
    QStringList m_lines;
    QByteArray m_errors;
    int m_read = 0;  // lines that were waited for
    int m_markers = 0;
    int m_hookFailures = 0;
};

}  // namespace panelry::test
