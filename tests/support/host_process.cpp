#include "support/host_process.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <filesystem>

namespace panelry::test
{

namespace
{

constexpr int kDeadlineMs = 60'000;
constexpr int kStepMs = 200;
const QString kNoHook = QStringLiteral("Failed to start libuiohook.");

// A hard link or a copy: a program that is a symbolic link lives in the folder of its target.
void PlaceProgram(const QString& from, const QString& to)
{
    std::error_code error;
    std::filesystem::create_hard_link(from.toStdString(), to.toStdString(), error);
    if (error) {
        QFile::copy(from, to);
    }
}

}  // namespace

QString Operate(int id, const char* verb, const char* keys)
{
    const QString more = *keys ? QLatin1Char(',') + QString::fromUtf8(keys) : QString();
    return QStringLiteral(R"(notify 0 %1 {"operate":"%2"%3})")
        .arg(QString::number(id), QLatin1String(verb), more);
}

QString Tell(int id, const char* order)
{
    const QString text = QStringLiteral(R"(notify 0 %1 {"operate":"notify","cmd":"900","bussiness":"%2"})");
    return text.arg(QString::number(id), QString::fromUtf8(order));
}

QString OutputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

HostProcess::HostProcess()
{
    PlaceProgram(QStringLiteral(PANELRY_TEST_HOST), m_folder.filePath(QStringLiteral("host")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!environment.contains(QStringLiteral("QT_QPA_PLATFORM"))) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    }
    m_process.setProcessEnvironment(environment);
    m_process.setWorkingDirectory(QStringLiteral("/"));
}

HostProcess::~HostProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void HostProcess::Set(const QString& variable, const QString& value)
{
    QProcessEnvironment environment = m_process.processEnvironment();
    environment.insert(variable, value);
    m_process.setProcessEnvironment(environment);
}

void HostProcess::AddModules(const QString& name, const QString& fileName) const
{
    const QString file = name + QStringLiteral(".so");
    const QDir folder(Folder());
    folder.mkpath(QStringLiteral("adsplugins"));
    QFile::link(QStringLiteral(PANELRY_TEST_MODULES "/") + file,
                folder.filePath(QStringLiteral("adsplugins/") + (fileName.isEmpty() ? file : fileName)));
}

void HostProcess::Write(const QString& path, const QByteArray& content) const
{
    QFile file(m_folder.filePath(path));
    QDir().mkpath(QFileInfo(file).path());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(file.fileName()));
    }
}

bool HostProcess::Start(const QStringList& arguments)
{
    AddModules(QStringLiteral("reporter"));
    m_process.start(m_folder.filePath(QStringLiteral("host")),
                    QStringList(QStringLiteral(PANELRY_TEST_LIBRARY_FILE)) + arguments);
    return m_process.waitForStarted();
}

bool HostProcess::StartAndInit()
{
    Write(QStringLiteral("sysconfig/config.json"), R"({"system":{"load_font":"0"}})");
    const bool started = Start();
    Do(QStringLiteral("init 16 32 1"));
    // The first marker may come out of the first drain, the second one only behind it.
    return started && Settle().contains(QStringLiteral("loading reporter")) && Settle().isEmpty();
}

bool HostProcess::Do(const QString& command)
{
    const QString wait = QStringLiteral("wait ");
    if (command.startsWith(wait)) {
        return !Wait(command.mid(wait.size())).isNull();
    }
    m_process.write(command.toUtf8() + '\n');
    return true;
}

bool HostProcess::Do(const QStringList& commands)
{
    return std::all_of(commands.begin(), commands.end(),
                       [this](const QString& command) { return Do(command); });
}

bool HostProcess::ReadMore(int deadlineMs)
{
    const bool read = m_process.canReadLine() || m_process.waitForReadyRead(deadlineMs);
    m_errors += m_process.readAllStandardError();
    while (m_process.canReadLine()) {
        const QString line = QString::fromUtf8(m_process.readLine()).chopped(1);
        // Without a display the library says so again and again, at moments of its own.
        if (line == kNoHook) {
            ++m_hookFailures;
        } else {
            m_lines.append(line);
        }
    }
    return read;
}

bool HostProcess::Find(const QString& needle)
{
    while (m_read < m_lines.size()) {
        if (m_lines[m_read++].contains(needle)) {
            return true;
        }
    }
    return false;
}

QString HostProcess::Wait(const QString& needle)
{
    return Await(needle, false);
}

// With `nudge`: a message that comes at the very end of the start may stay parked until the next one.
QString HostProcess::Await(const QString& needle, bool nudge)
{
    int patienceMs = kDeadlineMs;
    while (!Find(needle)) {
        const int lines = m_lines.size();
        if (ReadMore(kStepMs) && m_lines.size() > lines) {
            patienceMs = kDeadlineMs;
            continue;
        }
        patienceMs -= kStepMs;
        if (patienceMs <= 0 || m_process.state() == QProcess::NotRunning) {
            qInfo("no \"%s\" in:\n%s", qPrintable(needle), Story().constData());
            return {};
        }
        if (nudge) {
            Do(QStringLiteral("notify 7 0 nudge"));
        }
    }
    return m_lines[m_read - 1];
}

QStringList HostProcess::Settle()
{
    const int first = m_read;
    const QString marker = QStringLiteral("marker %1.").arg(++m_markers);
    Do(QStringLiteral("notify 1 %1 %2").arg(kMarkerId).arg(marker));
    if (Await(marker, true).isNull()) {
        return {QStringLiteral("no marker")};
    }
    const QStringList lines = m_lines.mid(first, m_read - 1 - first);
    const QString own = QString::number(kMarkerId);
    QStringList others;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(others),
                 [&own](const QString& line) { return !line.contains(own); });
    return others;
}

QStringList HostProcess::SettleBriefly()
{
    static const QRegularExpression making(QStringLiteral(
        " (Set\\w+|Initialize|Get\\w+)( |$)|^callback 2 |OnMessage 102 market= stockcode= stockname=$"));
    QStringList lines = Settle();
    lines.erase(
        std::remove_if(lines.begin(), lines.end(), [](const QString& line) { return line.contains(making); }),
        lines.end());
    return lines.replaceInStrings(QRegularExpression(QStringLiteral(" made in .*")), QStringLiteral(" made"));
}

QString HostProcess::Ask(int id, const QString& question)
{
    const QString keys =
        QStringLiteral(R"("need_create_new":"0","cmd":"900","bussiness":"ask %1")").arg(question);
    Do(Operate(id, "notify", keys.toUtf8().constData()));
    const QString key = QStringLiteral(" answer ");
    return Await(key, true).section(key, 1);
}

bool HostProcess::SaysThatThereIsNoHook()
{
    for (int patienceMs = kDeadlineMs; m_hookFailures == 0 && patienceMs > 0; patienceMs -= kStepMs) {
        ReadMore(kStepMs);
    }
    return m_hookFailures > 0;
}

bool HostProcess::Dies()
{
    while (ReadMore(kDeadlineMs)) {
    }
    m_process.waitForFinished(kDeadlineMs);
    m_errors += m_process.readAllStandardError();
    return m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::CrashExit;
}

bool HostProcess::End(const QStringList& commands, int status)
{
    const bool done = Do(commands);
    Do(QStringLiteral("exit %1").arg(status));
    if (!Dies() && done && m_process.state() == QProcess::NotRunning && Status() == status) {
        return true;
    }
    qInfo("ended with %d, not %d:\n%s", Status(), status, Story().constData());
    return false;
}

QByteArray HostProcess::Story() const
{
    return m_lines.mid(qMax(0, m_lines.size() - 40)).join(QLatin1Char('\n')).toUtf8() +
           "\nerrors: " + m_errors;
}

}  // namespace panelry::test
