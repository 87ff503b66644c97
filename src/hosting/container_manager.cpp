#include "hosting/container_manager.h"

#include <QCoreApplication>
#include <QMetaType>
#include <QThread>
#include <QTimer>
#include <QVariant>
#include <QWidget>
#include <utility>

#include "base/posting_order.h"
#include "bridge/deferred_queue.h"
#include "bridge/host_gate.h"
#include "hosting/container_widget.h"
#include "hosting/dispatch_scope.h"
#include "hosting/host_call.h"
#include "hosting/message_ids.h"
#include "hosting/operate_message.h"
#include "hosting/plugin_manager.h"
#include "hosting/widget_properties.h"
#include "input/hook_manager.h"
#include "services/module_base.h"

Q_DECLARE_METATYPE(std::string)

namespace
{

constexpr char kQuit[] = "quit";
constexpr char kDestroyUi[] = "destroyui";
constexpr int kAllComponents = -1;

ModuleBase* ModuleOf(const QObject* entry)
{
    return static_cast<ModuleBase*>(entry->property(panelry::kModulePointer).value<void*>());
}

bool FlagOf(const QWidget* widget, const char* property)
{
    return widget && widget->property(property).toBool();
}

void SetVisible(QObject* entry, bool visible)
{
    if (auto* const widget = qobject_cast<QWidget*>(entry)) {
        widget->clearFocus();
        widget->setVisible(visible);
    }
}

}  // namespace

ContainerManager::ContainerManager()
{
    panelry::bridge::ManagerAlive.exchange(true);
    PluginManager* const plugins = PluginManager::Instance(true);
    plugins->LoadModules();
    plugins->m_spi = this;
    HookManager::Instance(true)->Start();
    qRegisterMetaType<std::string>("std::string");
    qRegisterMetaType<std::string>("std::string&");
    connect(this, &ContainerManager::SignalOperateFromDealDesk, this,
            &ContainerManager::OnOperateFromDealDesk);
    connect(this, &ContainerManager::SignalGetPushData, this, &ContainerManager::OnDealPushData);
    panelry::bridge::Gate.Open(this);
}

ContainerManager::~ContainerManager()
{
    panelry::bridge::Gate.Close();
    if (PluginManager* const plugins = PluginManager::Instance(false)) {
        plugins->m_spi = nullptr;  // it outlives us, and dying modules may still send
    }
    panelry::bridge::DiscardParked();
    panelry::bridge::ManagerAlive.exchange(false);
}

void ContainerManager::OnOperateFromDealDesk(int nComponentId, const std::string& strRoot)
{
    Q_ASSERT(QThread::currentThread() == thread());
    if (m_ended) {
        return;
    }
    if (strRoot == kQuit) {
        Quit();
        return;
    }
    TakeInTurn(Kind::Operate, nComponentId, strRoot);
}

void ContainerManager::OnDealPushData(int nComponentId, const std::string& strPushData)
{
    Q_ASSERT(QThread::currentThread() == thread());
    if (!m_ended) {
        TakeInTurn(Kind::Push, nComponentId, strPushData);
    }
}

// What comes while a teardown waits or runs waits behind it, and later messages behind that.
void ContainerManager::TakeInTurn(Kind kind, int nComponentId, const std::string& text)
{
    if (!m_destroying && m_waiting.empty()) {
        Take(kind, nComponentId, text);
        return;
    }
    m_waiting.push_back({kind, nComponentId, text});
    TakeWaiting();
}

void ContainerManager::TakeWaiting()
{
    while (!m_destroying && !m_ended && !m_waiting.empty()) {
        const HostMessage next = std::move(m_waiting.front());
        m_waiting.pop_front();
        Take(next.kind, next.id, next.text);
    }
}

void ContainerManager::Take(Kind kind, int nComponentId, const std::string& text)
{
    if (kind == Kind::Push) {
        TakePush(nComponentId, text);
    } else if (text == kDestroyUi) {
        m_destroying = true;
        DestroyUiWhenIdle();
    } else {
        TakeOperate(nComponentId, text);
    }
    if (PluginManager* const plugins = PluginManager::Instance(false)) {
        plugins->DestroyLeaving();
    }
}

void ContainerManager::TakeOperate(int nComponentId, const std::string& strRoot)
{
    const panelry::DispatchScope scope;
    const panelry::OperateMessage message = panelry::ReadOperateMessage(strRoot);
    if (message.operate == "clicked") {
        Clicked(nComponentId, message, strRoot);
    } else if (message.operate == "show" || message.operate == "hide") {
        ShowOrHide(nComponentId, message);
    } else if (message.operate == "notify") {
        Notify(nComponentId, message, strRoot);
    }
}

void ContainerManager::Clicked(int nComponentId, const panelry::OperateMessage& message,
                               const std::string& text)
{
    if (m_containers[nComponentId].empty()) {
        CreateContainer(nComponentId, nullptr, text);
        m_visible = message.needDisplay;
    } else if (message.alwaysDisplay) {
        m_visible = true;
    } else {
        m_visible = !m_visible;  // the one shared flag: what was done with another component counts here
    }
    ForEachLive(nComponentId, [&](const QPointer<QObject>& entry) { ClickedEntry(entry, message); });
}

void ContainerManager::ClickedEntry(const QPointer<QObject>& entry, const panelry::OperateMessage& message)
{
    auto* const widget = qobject_cast<QWidget*>(entry.data());
    if (!widget) {
        return;  // a module without a widget hears nothing of a click
    }
    if (auto* const frame = qobject_cast<ContainerWidget*>(widget)) {
        TellCloneHandle(*frame);
    }
    if (message.command != -1) {
        SendTo(entry, message.command, message.business);
    }
    if (IsOpen(entry)) {  // the panel may have closed itself
        widget->setVisible(m_visible);
    }
}

// The host knows the first window of a component by itself; it is told of the others.
void ContainerManager::TellCloneHandle(ContainerWidget& frame)
{
    const QWidget* const widget = frame.ModuleWidget();
    if (widget && !FlagOf(widget, panelry::kFirstWidget)) {
        std::string handle = std::to_string(frame.winId());
        panelry::CallHost(panelry::bridge::kCloneHandle, handle.data());
    }
}

void ContainerManager::ShowOrHide(int nComponentId, const panelry::OperateMessage& message)
{
    m_visible = message.operate == "show";
    // The order differs on purpose: all panels hear first and are hidden after, an addressed one the other
    // way round. The message goes out even when its id is -1.
    if (nComponentId < 0) {
        ForEachOpen([&](const QPointer<QObject>& entry) {
            SendTo(entry, message.command, message.business);
            if (IsOpen(entry) && !IgnoresLockHide(entry)) {
                SetVisible(entry, m_visible);
            }
        });
        return;
    }
    ForEachLive(nComponentId, [&](const QPointer<QObject>& entry) {
        SetVisible(entry, m_visible);
        SendTo(entry, message.command, message.business);
    });
}

bool ContainerManager::IgnoresLockHide(QObject* entry) const
{
    if (auto* const frame = qobject_cast<ContainerWidget*>(entry)) {
        return FlagOf(frame->ModuleWidget(), panelry::kIgnoreLockHide);
    }
    ModuleBase* const module = ModuleOf(entry);
    return module && FlagOf(module->GetWidget(), panelry::kIgnoreLockHide);
}

void ContainerManager::Notify(int nComponentId, const panelry::OperateMessage& message,
                              const std::string& text)
{
    const auto notifyEntry = [&](const QPointer<QObject>& entry) {
        if (message.command != -1) {
            SendTo(entry, message.command, message.business);
        }
    };
    if (nComponentId < 0) {
        ForEachOpen(notifyEntry);
        return;
    }
    if (m_containers[nComponentId].empty() && message.needCreateNew) {
        CreateContainer(nComponentId, nullptr, text);
        m_visible = message.needDisplay;
    }
    ForEachCopied(Entries(m_containers[nComponentId]), notifyEntry);
}

// A frame that is closing lives on for a turn of the event loop, without its module.
bool ContainerManager::IsOpen(const QPointer<QObject>& entry)
{
    const auto* const frame = qobject_cast<const ContainerWidget*>(entry.data());
    return entry && (!frame || frame->GetModule());
}

void ContainerManager::TakePush(int nComponentId, const std::string& strPushData)
{
    const panelry::DispatchScope scope;
    if (nComponentId == kAllComponents) {
        ForEachOpen([&](const QPointer<QObject>& entry) { SendTo(entry, panelry::kPushData, strPushData); });
        return;
    }
    const std::string text = panelry::PushText(strPushData);
    if (m_containers[nComponentId].empty()) {
        CreateContainer(nComponentId, nullptr, strPushData);
    }
    ForEachCopied(Entries(m_containers[nComponentId]), [&](const QPointer<QObject>& entry) {
        SendTo(entry, panelry::kInitData, text);
        SendTo(entry, panelry::kPushData, text);
    });
}

void ContainerManager::SendTo(const QPointer<QObject>& entry, int msgId, const std::string& text)
{
    if (!entry) {
        return;
    }
    if (auto* const frame = qobject_cast<ContainerWidget*>(entry.data())) {
        frame->SendMessage(msgId, text);
    } else {
        Deliver(ModuleOf(entry), msgId, text);
    }
}

void ContainerManager::Deliver(ModuleBase* module, int msgId, const std::string& text)
{
    PluginManager* const plugins = PluginManager::Instance(false);
    // Held over the call: the module may close its own window in it.
    const std::shared_ptr<ModuleBase> held = plugins ? plugins->Hold(module) : nullptr;
    if (held && !m_ended) {
        held->OnMessage(msgId, const_cast<char*>(text.c_str()));
    }
}

// Components in ascending order, each over a copy: a module may open or close windows meanwhile.
template <class Action>
void ContainerManager::ForEachOpen(Action action)
{
    for (auto component = m_containers.begin(); component != m_containers.end();) {
        const std::int32_t id = component->first;
        ForEachCopied(Entries(component->second), action);
        component = m_containers.upper_bound(id);
    }
}

template <class Action>
void ContainerManager::ForEachCopied(const Entries& entries, Action action)
{
    for (const QPointer<QObject>& entry : entries) {
        if (entry && !m_ended) {
            action(entry);
        }
    }
}

// Over what is there at each step: windows that open meanwhile are reached as well, and one that closes doesn't
// take its neighbour's turn with it.
template <class Action>
void ContainerManager::ForEachLive(int nComponentId, Action action)
{
    const Entries& entries = m_containers[nComponentId];
    for (std::size_t i = 0; i < entries.size() && !m_ended;) {
        const QPointer<QObject> entry = entries[i];
        if (entry) {
            action(entry);
        }
        if (i < entries.size() && entries[i] == entry) {
            ++i;
        }
    }
}

void ContainerManager::ForwardToHost(int msgId, void* payload)
{
    panelry::CallHost(msgId, payload);
}

// Other container layers may have a use for these; this one has none.
void ContainerManager::HandleLinkedMessage(void* /*payload*/, int /*msgId*/) {}
void ContainerManager::HandleMessage201(void* /*payload*/) {}
void ContainerManager::HandleMessage202(void* /*payload*/) {}
void ContainerManager::HandleMessage203(void* /*payload*/) {}

void ContainerManager::Quit()
{
    m_ended = true;
    // In the middle of a call into host or module the panels are still on the stack. The loop ends all the
    // same, nested ones included, and the panels go when it has.
    if (!panelry::DispatchScope::Busy()) {
        DestroyPanels();
    }
    QCoreApplication::quit();
}

// Host messages cross the threads as events of this object.
bool ContainerManager::event(QEvent* event)
{
    panelry::AwaitPosted();
    return QObject::event(event);
}

void ContainerManager::FinishQuit()
{
    m_ended = true;
    DestroyPanels();
}

void ContainerManager::DestroyUiWhenIdle()
{
    if (m_ended) {
        return;
    }
    if (panelry::DispatchScope::Busy()) {
        QTimer::singleShot(panelry::DispatchScope::kRetryMs, this, &ContainerManager::DestroyUiWhenIdle);
        return;
    }
    DestroyPanels();
    m_destroying = false;
    TakeWaiting();
}

void ContainerManager::DestroyPanels()
{
    // Taken out first: what a dying window sets in motion finds an empty list.
    const std::map<std::int32_t, Entries> containers = std::exchange(m_containers, {});
    std::vector<PluginManager::LinkKey> links;
    for (const auto& [id, entries] : containers) {
        for (const QPointer<QObject>& entry : entries) {
            if (auto* const frame = qobject_cast<ContainerWidget*>(entry.data())) {
                links.push_back(frame->LinkKey());
                frame->ReleaseModuleWidget();  // foreign code, after which the frame may be gone
            }
            delete qobject_cast<QWidget*>(entry.data());
        }
    }
    if (PluginManager* const plugins = PluginManager::Instance(false)) {
        plugins->UnloadAll();
        for (const PluginManager::LinkKey link : links) {
            plugins->ForgetLink(link);
        }
    }
}
