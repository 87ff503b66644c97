#pragma once

#include <QPointer>
#include <memory>

#include "services/module_base.h"
#include "ui_probe/probe.h"
#include "ui_probe/ui_probe_widget.h"

namespace panelry
{

/// The UI probe's number.
inline constexpr unsigned kUiProbeId = 41009;

/// The message that carries a request: the host's "cmd", with the request as JSON text in "bussiness".
inline constexpr int kProbeRequest = 9100;

/// The UI probe as a module: what a test or a panel's author on the host's side reads and drives the screen
/// with. Answers go to the host as messages 205. Listens to the frame commands (common/frame_commands.h).
///
/// Ownership: holds the probe, and the widget, which the library may delete first. Threading: application
/// thread.
/// Failures: see Probe. What has no answer yet when the module goes stays without one.
class UiProbeModule : public ModuleBase
{
public:
    explicit UiProbeModule(const InstanceInfo& info);
    ~UiProbeModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    void SendAnswer(const QByteArray& answer);

    QPointer<UiProbeWidget> m_widget;
    std::unique_ptr<Probe> m_probe;
};

}  // namespace panelry
