#include "common/only_module.h"
#include "funds/funds_module.h"
#include "hosting/module_library.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kFundsPanelId, "funds", "资金");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::FundsModule(*info);
}
