#include "hot_keys/hot_keys_module.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/widget_properties.h"
#include "hot_keys/event_text.h"

namespace panelry
{

namespace
{

// Clicks (6) would only repeat what press and release have told.
constexpr event_type kMouseTypes[] = {EVENT_MOUSE_PRESSED, EVENT_MOUSE_RELEASED, EVENT_MOUSE_WHEEL};

}  // namespace

HotKeysModule::HotKeysModule(const InstanceInfo& info)
    : m_widget(new HotKeysWidget), m_hook(*this, [this](const uiohook_event& event) {
          if (m_widget) {
              m_widget->ShowArrival(EventText(event));
          }
      })
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    m_widget->setProperty(kSupportClone, true);
    style::SetFrameSize(m_widget, m_widget->sizeHint());
}

HotKeysModule::~HotKeysModule()
{
    delete m_widget;
}

void HotKeysModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/, const char* initParam)
{
    if (!m_widget) {
        return;
    }
    PlaceFrame(m_widget, initParam);
    const QJsonObject creation = QJsonDocument::fromJson(QByteArray(initParam)).object();
    const QJsonObject ofSource = creation.value(QLatin1String("init_data")).toObject();
    m_widget->Restore((ofSource.isEmpty() ? creation.value(QLatin1String("init_param")).toObject() : ofSource)
                          .toVariantMap());
    QObject::connect(m_widget, &HotKeysWidget::WishesChanged, m_widget, [this] { Listen(); });
    Listen();
}

void HotKeysModule::OnMessage(int msgId, void* payload)
{
    if (msgId == kHookEvent) {
        m_hook.Take(payload);  // on the hook thread: nothing else may be touched
    } else if (m_widget) {
        HandleFrameCommand(msgId, m_widget);
    }
}

void HotKeysModule::Listen()
{
    HookSubscription::Combinations combinations;
    for (const QString& combination : m_widget->Combinations()) {
        combinations.push_back(combination.toStdString());
    }
    // Off before on: taking one type of keys off takes the list of the other along.
    for (const event_type type : {EVENT_KEY_PRESSED, EVENT_KEY_RELEASED}) {
        m_hook.Unlisten(type);
    }
    if (!combinations.empty()) {
        m_hook.Listen(EVENT_KEY_PRESSED, combinations);
        if (m_widget->Releases()) {
            m_hook.Listen(EVENT_KEY_RELEASED, combinations);
        }
    }
    for (const event_type type : kMouseTypes) {
        if (m_widget->Mouse()) {
            m_hook.Listen(type);
        } else {
            m_hook.Unlisten(type);
        }
    }
}

}  // namespace panelry
