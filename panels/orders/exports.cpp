#include "common/only_module.h"
#include "host_tables/tables_module.h"
#include "hosting/module_library.h"
#include "orders/orders_spec.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kOrdersPanelId, "orders", "委托成交");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::TablesModule(*info, panelry::OrdersSpec());
}
