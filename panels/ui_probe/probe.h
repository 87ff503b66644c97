#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <deque>
#include <functional>
#include <vector>

#include "ui_probe/user_input.h"
#include "ui_probe/wait_condition.h"

namespace panelry
{

/// Answers requests about all widgets of the process: reads them, presses, types, waits. The requests and
/// answers stand in docs/ui-probe.md.
///
/// A request is carried out from the event loop, never inside Take(), and in the order they came; a "wait"
/// doesn't hold up those behind it. Each gets one answer, unless the probe is gone first.
///
/// Ownership: belongs to its module; may be destroyed by what it presses. Threading: application thread.
/// Failures: told by the answer, as "ok" false and an "error" in English.
class Probe : public QObject
{
    Q_OBJECT

public:
    /// `send` gets each answer as JSON text.
    explicit Probe(std::function<void(const QByteArray&)> send, QObject* parent = nullptr);

    /// A request as it came; anything is one, null too.
    void Take(const char* text);

Q_SIGNALS:
    /// One is being answered; `request` is empty if it was no JSON object.
    void Answered(const QJsonObject& request, const QJsonObject& answer);

private:
    struct Request {
        int number = 0;
        QJsonObject keys;
        QString problem;
    };
    struct Wait {
        Request request;
        WaitCondition condition;
        QDeadlineTimer deadline;
        QElapsedTimer since;
    };

    void NextLater();
    void Next();
    void CarryOut(const Request& request);
    void Answer(const Request& request, const QJsonObject& answer);
    void Refuse(const Request& request, const QString& problem);

    void ReadTree(const Request& request);
    void Find(const Request& request);
    void Press(const Request& request);
    void Type(const Request& request);
    void Key(const Request& request);
    void Set(const Request& request);
    void StartWait(const Request& request);

    void Deliver(const Request& request, const InputSteps& steps, QWidget* target);
    void DeliverKeys(const Request& request, const InputSteps& steps, const QPointer<QWidget>& target,
                     QDeadlineTimer deadline);
    void PollWaits();
    bool PollWait(const Wait& wait);

    const std::function<void(const QByteArray&)> m_send;
    std::deque<Request> m_requests;
    int m_lastNumber = 0;
    int m_current = 0;  // number of the request that is being carried out, 0 for none
    std::vector<Wait> m_waits;
    QTimer m_poll;
};

}  // namespace panelry
