#include "hosting/module_library.h"
#include "message_monitor/message_monitor_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kMessageMonitorId;
        info.module_key = "message_monitor";
        info.module_title = "消息监视";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::MessageMonitorModule(*info);
}
