#include "message_monitor/message_monitor_module.h"

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "message_monitor/message_line.h"

namespace panelry
{

MessageMonitorModule::MessageMonitorModule(const InstanceInfo& info) : m_widget(new MessageMonitorWidget)
{
    m_instance = info;
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    style::SetFrameSize(m_widget, m_widget->sizeHint());
}

MessageMonitorModule::~MessageMonitorModule()
{
    delete m_widget;
}

void MessageMonitorModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/,
                                      const char* initParam)
{
    PlaceFrame(m_widget, initParam);  // nothing else to set up: messages come by themselves
}

void MessageMonitorModule::OnMessage(int msgId, void* payload)
{
    if (msgId == kHookEvent || !m_widget) {
        return;
    }
    m_widget->Add(msgId, PayloadText(msgId, payload));
    HandleFrameCommand(msgId, m_widget);
}

}  // namespace panelry
