#include "ui_probe/ui_probe_module.h"

#include "common/frame_commands.h"
#include "common/panel_style.h"
#include "common/placement.h"
#include "hosting/message_ids.h"
#include "hosting/module_manager_spi.h"

namespace panelry
{

UiProbeModule::UiProbeModule(const InstanceInfo& info)
    : m_widget(new UiProbeWidget(kProbeRequest)),
      m_probe(std::make_unique<Probe>([this](const QByteArray& answer) { SendAnswer(answer); }))
{
    m_instance = info;
    m_widget->setObjectName(QStringLiteral("ui_probe"));
    m_widget->setWindowTitle(QString::fromStdString(info.module_title));
    style::SetFrameSize(m_widget, m_widget->sizeHint());
    QObject::connect(m_probe.get(), &Probe::Answered, m_widget, &UiProbeWidget::Add);
}

UiProbeModule::~UiProbeModule()
{
    m_probe.reset();  // the widget's end may still run code of others
    delete m_widget;
}

void UiProbeModule::Initialize(int /*moduleId*/, const char* /*a*/, const char* /*b*/, const char* initParam)
{
    PlaceFrame(m_widget, initParam);  // nothing else to set up: requests come by themselves
}

void UiProbeModule::OnMessage(int msgId, void* payload)
{
    if (msgId == kProbeRequest) {
        m_probe->Take(static_cast<const char*>(payload));
    } else if (m_widget) {
        HandleFrameCommand(msgId, m_widget);
    }
}

void UiProbeModule::SendAnswer(const QByteArray& answer)
{
    QByteArray text = answer;  // the payload isn't const
    m_manager->SendModuleMessage(kToHost205, text.data(), this, kAlongLink);
}

}  // namespace panelry
