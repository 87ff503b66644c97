#pragma once

#include <QPointer>

#include "message_monitor/message_monitor_widget.h"
#include "services/module_base.h"

namespace panelry
{

/// The message monitor's number.
inline constexpr unsigned kMessageMonitorId = 41002;

/// The message monitor as a module: shows every message that reaches it, see message_monitor/message_line.h
/// for what it reads of which. Obeys the frame commands (common/frame_commands.h) and shows them too.
///
/// Ownership: holds the widget, which the library may delete first. Threading: application thread; 119, which
/// comes on another one and only to who registered for it, is passed over.
class MessageMonitorModule : public ModuleBase
{
public:
    explicit MessageMonitorModule(const InstanceInfo& info);
    ~MessageMonitorModule() override;

    void Initialize(int moduleId, const char* a, const char* b, const char* initParam) override;
    void OnMessage(int msgId, void* payload) override;
    QWidget* GetWidget() override { return m_widget; }

private:
    QPointer<MessageMonitorWidget> m_widget;
};

}  // namespace panelry
