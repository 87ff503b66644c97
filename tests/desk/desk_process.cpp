#include "desk/desk_process.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace panelry::test
{

static constexpr int kPatienceMs = 30000;

DeskProcess::DeskProcess()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("XDG_STATE_HOME", memory.path());
    process.setProcessEnvironment(environment);
}

void DeskProcess::Program::setupChildProcess()
{
    signal(SIGHUP, ignoresHangUp ? SIG_IGN : SIG_DFL);
}

void DeskProcess::Start(const QString& arguments, const QString& library, const QString& program)
{
    QStringList words = arguments.split(' ', Qt::SkipEmptyParts);
    if (!library.isEmpty()) {
        words << "--library" << library;
    }
    process.start(program, words);
}

bool DeskProcess::SaysNext(const QByteArray& part)
{
    const QDeadlineTimer deadline(kPatienceMs);
    do {
        TakeLines();
        while (m_heard < texts.size()) {
            if (texts[m_heard++].contains(part)) {
                return true;
            }
        }
    } while (!deadline.hasExpired() &&
             (process.waitForReadyRead(static_cast<int>(deadline.remainingTime())) || process.canReadLine()));
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
        story << line["event"].toString();
        for (const char* const key : {"reason", "text", "note"}) {
            story.last() += line.contains(key) ? ':' + line[key].toString() : QString();
        }
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
