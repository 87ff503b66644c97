#include "ui_probe/probe.h"

#include <QApplication>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>

#include "ui_probe/request_rules.h"
#include "ui_probe/selector.h"
#include "ui_probe/value_setter.h"
#include "ui_probe/widget_reader.h"

namespace panelry
{

namespace
{

constexpr int kVersion = 1;
constexpr int kPollMs = 20;
constexpr int kKeyboardWaitMs = 2'000;
constexpr int kWaitMs = 5'000;
constexpr int kMostFound = 100;

QString Text(const QJsonObject& request, const char* key)
{
    return request[QLatin1String(key)].toString();
}

WidgetReader::Options ReadOptions(const QJsonObject& request)
{
    WidgetReader::Options options;
    options.depth = request[QLatin1String("depth")].toInt(options.depth);
    options.onScreenOnly = request[QLatin1String("visible")].toBool();
    options.rows.first = request[QLatin1String("first_row")].toInt();
    options.rows.most = request[QLatin1String("rows")].toInt(options.rows.most);
    return options;
}

// The widget of the request's selector, if a user could act on it now.
Chosen ChooseReachable(const QJsonObject& request)
{
    Chosen chosen = ChooseWidget(Text(request, "selector"), request);
    if (chosen.widget) {
        chosen.problem = WhyOutOfReach(*chosen.widget);
    }
    return chosen;
}

void TellTruncated(QJsonObject& answer, bool truncated)
{
    if (truncated) {
        answer[QStringLiteral("truncated")] = true;
    }
}

}  // namespace

Probe::Probe(std::function<void(const QByteArray&)> send, QObject* parent)
    : QObject(parent), m_send(std::move(send))
{
    m_poll.setInterval(kPollMs);
    connect(&m_poll, &QTimer::timeout, this, &Probe::PollWaits);
}

void Probe::Take(const char* text)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray(text), &error);
    Request request{++m_lastNumber, document.object(), {}};
    if (error.error != QJsonParseError::NoError) {
        request.problem = QStringLiteral("no JSON: ") + error.errorString();
    } else {
        request.problem =
            document.isObject() ? RequestProblem(request.keys) : QStringLiteral("no JSON object");
    }
    m_requests.push_back(request);
    NextLater();
}

void Probe::NextLater()
{
    QTimer::singleShot(0, this, &Probe::Next);
}

void Probe::Next()
{
    if (m_current != 0 || m_requests.empty()) {
        return;
    }
    const Request request = m_requests.front();
    m_requests.pop_front();
    m_current = request.number;
    CarryOut(request);  // may destroy the probe: nothing may follow
}

void Probe::CarryOut(const Request& request)
{
    static const QHash<QString, void (Probe::*)(const Request&)> operations{
        {QStringLiteral("tree"), &Probe::ReadTree}, {QStringLiteral("find"), &Probe::Find},
        {QStringLiteral("press"), &Probe::Press},   {QStringLiteral("type"), &Probe::Type},
        {QStringLiteral("key"), &Probe::Key},       {QStringLiteral("set"), &Probe::Set},
        {QStringLiteral("wait"), &Probe::StartWait}};
    if (!request.problem.isEmpty()) {
        Refuse(request, request.problem);
        return;
    }
    const auto operation = operations[Text(request.keys, "request")];
    (this->*operation)(request);
}

void Probe::Answer(const Request& request, const QJsonObject& answer)
{
    if (m_current == request.number) {
        m_current = 0;
        NextLater();
    }
    QJsonObject whole = answer;
    whole[QStringLiteral("probe")] = kVersion;
    whole[QStringLiteral("request")] = request.keys[QLatin1String("request")];
    const QJsonValue id = request.keys[QLatin1String("id")];
    whole[QStringLiteral("id")] = id.isUndefined() ? QJsonValue::Null : id;
    if (!whole.contains(QLatin1String("ok"))) {
        whole[QStringLiteral("ok")] = true;
    }
    Q_EMIT Answered(request.keys, whole);
    m_send(QJsonDocument(whole).toJson(QJsonDocument::Compact));
}

void Probe::Refuse(const Request& request, const QString& problem)
{
    Answer(request, {{QStringLiteral("ok"), false}, {QStringLiteral("error"), problem}});
}

void Probe::ReadTree(const Request& request)
{
    WidgetReader reader(ReadOptions(request.keys));
    QJsonArray widgets;
    if (request.keys.contains(QLatin1String("root"))) {
        const Chosen root = ChooseWidget(Text(request.keys, "root"), request.keys);
        if (!root.widget) {
            Refuse(request, root.problem);
            return;
        }
        widgets.append(reader.ReadTree(*root.widget));
    } else {
        widgets = reader.ReadTrees(RootWidgets());
    }
    QJsonObject answer{{QStringLiteral("widgets"), widgets}};
    TellTruncated(answer, reader.Truncated());
    Answer(request, answer);
}

void Probe::Find(const Request& request)
{
    QString problem;
    const auto selector = Selector::Read(Text(request.keys, "selector"), problem);
    const QVector<QWidget*> matches = selector->Matches(request.keys[QLatin1String("visible")].toBool());
    WidgetReader reader(ReadOptions(request.keys));
    QJsonArray widgets;
    for (const QWidget* const match : matches.mid(0, kMostFound)) {
        widgets.append(reader.ReadOne(*match));
    }
    QJsonObject answer{{QStringLiteral("count"), matches.size()}, {QStringLiteral("widgets"), widgets}};
    TellTruncated(answer, reader.Truncated() || matches.size() > kMostFound);
    Answer(request, answer);
}

void Probe::Press(const Request& request)
{
    const Chosen chosen = ChooseReachable(request.keys);
    if (!chosen.problem.isEmpty()) {
        Refuse(request, chosen.problem);
        return;
    }
    QString problem;
    const PressPoint point = FindPressPoint(*chosen.widget, request.keys);
    const InputSteps steps =
        point.problem.isEmpty() ? PressSteps(point, request.keys, problem) : InputSteps();
    if (steps.empty()) {
        Refuse(request, point.problem + problem);
        return;
    }
    QWidget* const window = point.widget->window();
    if (window->windowType() != Qt::Popup && !window->isActiveWindow()) {
        window->raise();
        window->activateWindow();
    }
    Deliver(request, steps, chosen.widget);
}

void Probe::Type(const Request& request)
{
    const Chosen chosen = ChooseReachable(request.keys);
    if (!chosen.problem.isEmpty()) {
        Refuse(request, chosen.problem);
        return;
    }
    DeliverKeys(request, TypeSteps(Text(request.keys, "text"), request.keys[QLatin1String("clear")].toBool()),
                chosen.widget, QDeadlineTimer(kKeyboardWaitMs));
}

void Probe::Key(const Request& request)
{
    QString problem;
    const InputSteps steps = KeySteps(Text(request.keys, "key"), problem);
    Chosen chosen;
    if (problem.isEmpty() && request.keys.contains(QLatin1String("selector"))) {
        chosen = ChooseReachable(request.keys);
        problem = chosen.problem;
    } else if (problem.isEmpty() && !QApplication::activePopupWidget() && !QGuiApplication::focusWindow()) {
        problem = QStringLiteral("no window has the keyboard");
    }
    if (!problem.isEmpty()) {
        Refuse(request, problem);
    } else if (chosen.widget) {
        DeliverKeys(request, steps, chosen.widget, QDeadlineTimer(kKeyboardWaitMs));
    } else {
        Deliver(request, steps, nullptr);
    }
}

void Probe::Set(const Request& request)
{
    const Chosen chosen = ChooseWidget(Text(request.keys, "selector"), request.keys);
    if (!chosen.widget) {
        Refuse(request, chosen.problem);
        return;
    }
    const QPointer<QWidget> widget = chosen.widget;
    const QPointer<Probe> self = this;
    const QString problem = SetValue(*chosen.widget, request.keys[QLatin1String("value")]);
    if (!self) {
        return;
    }
    if (!problem.isEmpty()) {
        Refuse(request, problem);
    } else {
        Answer(request, {{QStringLiteral("value"), widget ? MainValue(*widget) : QJsonValue::Null},
                         {QStringLiteral("destroyed"), widget.isNull()}});
    }
}

// The keyboard comes to a window when the window system says so, which takes turns of the event loop.
void Probe::DeliverKeys(const Request& request, const InputSteps& steps, const QPointer<QWidget>& target,
                        QDeadlineTimer deadline)
{
    const QString problem = target ? WhyOutOfReach(*target) : QStringLiteral("the widget has been destroyed");
    if (!problem.isEmpty()) {
        Refuse(request, problem);
    } else if (HasKeyboard(*target)) {
        Deliver(request, steps, target);
    } else if (deadline.hasExpired()) {
        Refuse(request, Described(*target) + QStringLiteral(" doesn't get the keyboard"));
    } else {
        QTimer::singleShot(kPollMs, this, [=, this] { DeliverKeys(request, steps, target, deadline); });
    }
}

void Probe::Deliver(const Request& request, const InputSteps& steps, QWidget* target)
{
    const bool aimed = target != nullptr;
    const QString described = aimed ? Described(*target) : QString();
    DeliverInput(steps, [=, self = QPointer<Probe>(this), widget = QPointer<QWidget>(target)](bool nested) {
        if (!self) {
            return;
        }
        QJsonObject answer{{QStringLiteral("nested"), nested}};
        if (aimed) {
            answer[QStringLiteral("widget")] = described;
            answer[QStringLiteral("destroyed")] = widget.isNull();
        }
        if (const QWidget* const front = WindowInFront()) {
            answer[QStringLiteral("in_front")] = Described(*front);
        }
        self->Answer(request, answer);
    });
}

void Probe::StartWait(const Request& request)
{
    const int timeout = request.keys[QLatin1String("timeout")].toInt(kWaitMs);
    Wait wait{request, WaitCondition(request.keys), QDeadlineTimer(timeout, Qt::PreciseTimer), {}};
    wait.since.start();
    m_current = 0;  // others go on
    NextLater();
    if (!PollWait(wait)) {
        m_waits.push_back(wait);
        m_poll.start();
    }
}

void Probe::PollWaits()
{
    const std::vector<Wait> waits = std::exchange(m_waits, {});
    const QPointer<Probe> self = this;
    for (const Wait& wait : waits) {
        const bool answered = PollWait(wait);
        if (!self) {
            return;
        }
        if (!answered) {
            m_waits.push_back(wait);
        }
    }
    if (m_waits.empty()) {
        m_poll.stop();
    }
}

bool Probe::PollWait(const Wait& wait)
{
    QWidget* widget = nullptr;
    const QString unmet = wait.condition.Unmet(widget);
    const qint64 waited = wait.since.elapsed();
    if (unmet.isEmpty()) {
        QJsonObject answer{{QStringLiteral("waited"), waited}};
        if (widget) {
            answer[QStringLiteral("widget")] = WidgetReader({}).ReadOne(*widget);
        }
        Answer(wait.request, answer);
        return true;
    }
    if (wait.deadline.hasExpired()) {
        Refuse(wait.request, QStringLiteral("timed out after %1 ms: %2").arg(waited).arg(unmet));
        return true;
    }
    return false;
}

}  // namespace panelry
