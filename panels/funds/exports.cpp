#include "funds/funds_module.h"
#include "hosting/module_library.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kFundsPanelId;
        info.module_key = "funds";
        info.module_title = "资金";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::FundsModule(*info);
}
