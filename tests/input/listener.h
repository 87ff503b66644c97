#pragma once

#include <uiohook.h>

#include <unistd.h>
#include <QString>
#include <QTemporaryFile>
#include <cstdio>
#include <functional>
#include <utility>

#include "hosting/message_ids.h"
#include "services/module_base.h"

namespace panelry::test
{

/// A module that writes its name down whenever it hears an event.
class Listener : public ModuleBase
{
public:
    Listener(QString name, QString& log) : m_name(std::move(name)), m_log(log) {}
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int msgId, void* payload) override
    {
        m_log += msgId == kHookEvent ? m_name : QStringLiteral("?");
        if (heard) {
            heard(*static_cast<uiohook_event*>(payload));
        }
    }

    std::function<void(const uiohook_event&)> heard;

private:
    const QString m_name;
    QString& m_log;
};

/// What the program writes to its standard output, for as long as the object lives.
class CapturedOutput
{
public:
    CapturedOutput()
    {
        m_file.open();
        std::fflush(stdout);
        m_stdout = ::dup(STDOUT_FILENO);
        ::dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~CapturedOutput() { Text(); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    /// All of it; the capture is over then.
    QByteArray Text()
    {
        std::fflush(stdout);
        if (m_stdout >= 0) {
            ::dup2(m_stdout, STDOUT_FILENO);
            ::close(std::exchange(m_stdout, -1));
        }
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    QTemporaryFile m_file;
    int m_stdout = -1;
};

}  // namespace panelry::test
