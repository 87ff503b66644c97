#include "hosting/module_library.h"
#include "order_ticket/order_ticket_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kOrderTicketId;
        info.module_key = "order_ticket";
        info.module_title = "下单";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::OrderTicketModule(*info);
}
