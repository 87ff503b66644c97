#include "input/hook_subscription.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"
#include "services/module_base.h"

namespace panelry
{

namespace
{

constexpr std::size_t kMostTaken = 1000;

}  // namespace

HookSubscription::HookSubscription(ModuleBase& module, Handler handler)
    : m_module(module), m_handler(std::move(handler)), m_reader([this] { HandOver(); })
{
}

HookSubscription::~HookSubscription()
{
    for (const event_type type : m_types) {
        Send(kUnregisterHotKey, type, nullptr);
    }
}

void HookSubscription::Listen(event_type type)
{
    m_types.insert(type);
    Send(kRegisterHotKey, type, nullptr);
}

void HookSubscription::Listen(event_type type, const Combinations& combinations)
{
    m_types.insert(type);
    Send(kRegisterHotKey, type, &combinations);
}

void HookSubscription::Unlisten(event_type type)
{
    m_types.erase(type);
    Send(kUnregisterHotKey, type, nullptr);
}

void HookSubscription::Send(int message, event_type type, const Combinations* combinations)
{
    if (!m_module.m_manager) {
        return;
    }
    QJsonObject registration{{QStringLiteral("hook_type"), QString::number(type)}};
    if (combinations) {
        QJsonArray values;
        for (const std::string& combination : *combinations) {
            values.append(QString::fromStdString(combination));
        }
        registration[QStringLiteral("keyboard_value")] = values;
    }
    QByteArray text = QJsonDocument(registration).toJson(QJsonDocument::Compact);
    m_module.m_manager->SendModuleMessage(message, text.data(), &m_module, kAlongLink);
}

void HookSubscription::Take(const void* payload)
{
    const std::lock_guard guard(m_lock);
    if (m_taken.size() == kMostTaken) {
        return;
    }
    m_taken.push_back(*static_cast<const uiohook_event*>(payload));
    m_reader.Post();
}

// One event a call: an event loop inside the handler goes on where this one stands.
void HookSubscription::HandOver()
{
    uiohook_event taken{};
    {
        const std::lock_guard guard(m_lock);
        taken = m_taken.front();
        m_taken.pop_front();
    }
    const Handler handler = m_handler;  // a copy: the module may die in it
    handler(taken);
}

}  // namespace panelry
