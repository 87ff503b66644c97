#include "desk/desk_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace panelry::test
{

namespace
{

constexpr int kPatienceMs = 30000;

}  // namespace

DeskProcess::DeskProcess()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), memory.path());
    process.setProcessEnvironment(environment);
}

void DeskProcess::Program::setupChildProcess()
{
    signal(SIGHUP, ignoresHangUp ? SIG_IGN : SIG_DFL);
}

void DeskProcess::Start(QStringList arguments, const QString& library, const QString& program)
{
    if (!library.isEmpty()) {
        arguments << QStringLiteral("--library") << library;
    }
    process.start(program, arguments);
}

bool DeskProcess::WaitFor(const char* key, const QString& value)
{
    const QDeadlineTimer deadline(kPatienceMs);
    for (int seen = 0; !deadline.hasExpired();) {
        TakeLines();
        for (; seen < lines.size(); ++seen) {
            if (lines[seen].value(QLatin1String(key)).toString() == value) {
                return true;
            }
        }
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())) && !process.canReadLine()) {
            return false;
        }
    }
    return false;
}

bool DeskProcess::SaysNext(const QByteArray& part)
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!deadline.hasExpired()) {
        TakeLines();
        while (m_heard < texts.size()) {
            if (texts[m_heard++].contains(part)) {
                return true;
            }
        }
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())) && !process.canReadLine()) {
            return false;
        }
    }
    return false;
}

int DeskProcess::Finish()
{
    const bool ended = process.waitForFinished(kPatienceMs);
    TakeLines();
    if (process.processChannelMode() == QProcess::SeparateChannels) {
        errors = QString::fromUtf8(process.readAllStandardError());
    }
    return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QStringList DeskProcess::Story() const
{
    QStringList story;
    for (const QJsonObject& line : lines) {
        QString entry = line[QLatin1String("event")].toString();
        for (const char* const key : {"reason", "text", "note"}) {
            if (line.contains(QLatin1String(key))) {
                entry += QLatin1Char(':') + line[QLatin1String(key)].toString();
            }
        }
        story << entry;
    }
    return story;
}

void DeskProcess::TakeLines()
{
    while (process.canReadLine()) {
        const QByteArray text = process.readLine();
        const QJsonDocument document = QJsonDocument::fromJson(text);
        if (document.isObject()) {
            lines.append(document.object());
            texts.append(text);
        } else {
            brokenLines.append(QString::fromUtf8(text));
        }
    }
}

Pipe::Pipe()
{
    if (pipe2(ends.data(), O_CLOEXEC) != 0 || fcntl(ends[0], F_SETFL, O_NONBLOCK) != 0) {
        qFatal("no pipe");
    }
}

Pipe::~Pipe()
{
    close(ends[0]);
    close(ends[1]);
}

std::string Pipe::TakeAll() const
{
    std::string taken;
    std::array<char, 65536> block{};
    for (ssize_t size = 0; (size = read(ends[0], block.data(), block.size())) > 0;) {
        taken.append(block.data(), static_cast<std::size_t>(size));
    }
    return taken;
}

bool Pipe::IsFull() const
{
    pollfd room{.fd = ends[1], .events = POLLOUT, .revents = 0};
    return poll(&room, 1, 0) == 0;
}

QString Text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList Texts(std::initializer_list<const char*> utf8)
{
    QStringList texts;
    for (const char* const text : utf8) {
        texts << Text(text);
    }
    return texts;
}

QString WriteFile(const QTemporaryDir& directory, const QString& name, const QByteArray& content)
{
    const QString path = directory.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("can't write %s", qPrintable(path));
    }
    return path;
}

}  // namespace panelry::test
