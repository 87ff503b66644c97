#pragma once

#include <QPointer>

#include "hot_keys/hot_keys_widget.h"
#include "input/hook_subscription.h"
#include "services/module_base.h"

namespace panelry
{

/// The hot keys panel's number.
inline constexpr unsigned kHotKeysPanelId = 41004;

/// The global hot keys as a panel: registers the combinations that its user types in, and shows what arrives.
/// Without a combination it hears no key: a module without a list would hear them all.
///
/// The host may give along what a clone takes over: "init_param" {"combinations": "f9 ctrl+shift+a"}. Listens to the frame
/// commands (common/frame_commands.h).
///
/// Ownership: holds the widget, which the library may delete first, and the subscription.
/// Threading: application thread, but for message 119, which only the subscription touches.
class HotKeysModule : public ModuleBase
{
public:
    explicit HotKeysModule(const InstanceInfo& info);
    ~HotKeysModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    void Listen();

    QPointer<HotKeysWidget> m_widget;
    HookSubscription m_hook;
};

}  // namespace panelry
