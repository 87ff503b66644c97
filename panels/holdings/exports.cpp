#include "common/only_module.h"
#include "holdings/holdings_spec.h"
#include "host_tables/tables_module.h"
#include "hosting/module_library.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kHoldingsPanelId, "holdings", "持仓");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::TablesModule(*info, panelry::HoldingsSpec());
}
