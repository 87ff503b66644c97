#include "host_tables/tables_module.h"
#include "hosting/module_library.h"
#include "orders/orders_spec.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kOrdersPanelId;
        info.module_key = "orders";
        info.module_title = "委托成交";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::TablesModule(*info, panelry::OrdersSpec());
}
