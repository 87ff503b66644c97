#pragma once

#include <QObject>
#include <QPointer>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/singleton.h"
#include "hosting/frame_owner.h"
#include "hosting/plugin_manager_spi.h"

class ContainerWidget;
class ModuleBase;
namespace panelry
{
struct CreationMessage;
struct OperateMessage;
}  // namespace panelry

/// The application thread's end of the host's messages: turns their texts into modules, into windows shown
/// and hidden, and into messages to modules. Owns the list of what is open.
///
/// Ownership: a singleton of the application thread. Frames belong to themselves, modules to PluginManager;
/// the
///   list only points at them, and widgets that stand without a frame are deleted at teardown.
/// Threading: lives on the application thread. Only the two signals may be emitted from host threads, by way
/// of
///   bridge/host_bridge.h; the calls are queued from there.
/// Failures: text that isn't JSON, or holds a value of the wrong type, counts as far as it was read; nothing
/// is
///   reported. An exception out of a module goes through.
class ContainerManager : public QObject,
                         public PluginManagerSpi,
                         public panelry::FrameOwner,
                         public panelry::Singleton<ContainerManager, panelry::AtExit::LeaveIfRunning>
{
    Q_OBJECT

public:
    /// Raises ManagerAlive, loads the module libraries, starts the hot key service, connects the signals, opens
    /// itself to host threads.
    ContainerManager();
    ~ContainerManager() override;

    // PluginManagerSpi; but for the host's messages nothing is done here.
    void HandleLinkedMessage(void* payload, int msgId) override;
    void ForwardToHost(int msgId, void* payload) override;
    void HandleMessage201(void* payload) override;
    void HandleMessage202(void* payload) override;
    void HandleMessage203(void* payload) override;

    /// Opens a window of `nComponentId` as `text` says, as a clone of `source` unless that is null. Nothing
    /// opens when no library offers the id.
    void CreateContainer(int nComponentId, ContainerWidget* source, const std::string& text) override;
    void RemoveContainer(QObject* object) override;
    void Deliver(ModuleBase* module, int msgId, const std::string& text) override;

    /// Ten windows of a component at most can be had by the clone button; this sets the buttons of all of
    /// them.
    void RefreshCloneButtons(int nComponentId);

    bool event(QEvent* event) override;

    /// Destroys the panels that are left when the event loop has ended: "quit" may come at a moment when they
    /// can't be, and a module may end the loop without asking anybody.
    void FinishQuit();

Q_SIGNALS:
    void SignalOperateFromDealDesk(int nComponentId, const std::string& strOperate);
    void SignalGetPushData(int nComponentId, const std::string& strPushData);

public Q_SLOTS:
    /// An operate message: one of the bare words "quit" and "destroyui", or a JSON object.
    void OnOperateFromDealDesk(int nComponentId, const std::string& strRoot);
    /// Push data; -1 reaches everything that is open.
    void OnDealPushData(int nComponentId, const std::string& strPushData);

private:
    // What is open of one component, oldest first: frames, bare widgets, or modules without a widget.
    using Entries = std::vector<QPointer<QObject>>;

    enum class Kind { Operate, Push };
    struct HostMessage {
        Kind kind;
        int id;
        std::string text;
    };
    void TakeInTurn(Kind kind, int nComponentId, const std::string& text);
    void TakeWaiting();
    void Take(Kind kind, int nComponentId, const std::string& text);
    void TakeOperate(int nComponentId, const std::string& strRoot);
    void TakePush(int nComponentId, const std::string& strPushData);
    static bool IsOpen(const QPointer<QObject>& entry);

    void Clicked(int nComponentId, const panelry::OperateMessage& message, const std::string& text);
    void ClickedEntry(const QPointer<QObject>& entry, const panelry::OperateMessage& message);
    void TellCloneHandle(ContainerWidget& frame);
    void ShowOrHide(int nComponentId, const panelry::OperateMessage& message);
    bool IgnoresLockHide(QObject* entry) const;
    void Notify(int nComponentId, const panelry::OperateMessage& message, const std::string& text);
    void SendTo(const QPointer<QObject>& entry, int msgId, const std::string& text);
    template <class Action>
    void ForEachOpen(Action action);
    template <class Action>
    void ForEachCopied(const Entries& entries, Action action);
    template <class Action>
    void ForEachLive(int nComponentId, Action action);

    std::shared_ptr<ModuleBase> MakeModule(int nComponentId, const ContainerWidget* frame,
                                           const std::string& creationText);
    void PlaceClone(int nComponentId, ContainerWidget& frame, const ContainerWidget& source);
    QObject* MarkModule(int nComponentId, ModuleBase& module, const panelry::CreationMessage& message);
    static void RemoveModuleOf(const ContainerWidget* frame, ModuleBase* module);
    void AskForTitle(int nComponentId, const QPointer<ContainerWidget>& frame);

    void Quit();
    void DestroyUiWhenIdle();
    void DestroyPanels();

    std::map<std::int32_t, Entries> m_containers;
    bool m_visible = false;  // what was last decided by a verb; one flag for all components

    bool m_ended = false;               // "quit" came
    bool m_destroying = false;          // "destroyui" came: it runs, or waits until nothing else does
    std::deque<HostMessage> m_waiting;  // what came behind it
};
