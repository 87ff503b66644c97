#include "common/only_module.h"
#include "hosting/module_library.h"
#include "order_ticket/order_ticket_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kOrderTicketId, "order_ticket", "下单");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::OrderTicketModule(*info);
}
