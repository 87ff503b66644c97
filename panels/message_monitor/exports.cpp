#include "common/only_module.h"
#include "hosting/module_library.h"
#include "message_monitor/message_monitor_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kMessageMonitorId, "message_monitor", "消息监视");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::MessageMonitorModule(*info);
}
