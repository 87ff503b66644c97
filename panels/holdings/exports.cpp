#include "holdings/holdings_spec.h"
#include "host_tables/tables_module.h"
#include "hosting/module_library.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kHoldingsPanelId;
        info.module_key = "holdings";
        info.module_title = "持仓";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::TablesModule(*info, panelry::HoldingsSpec());
}
