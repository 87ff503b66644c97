#include "hosting/module_library.h"
#include "hot_keys/hot_keys_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kHotKeysPanelId;
        info.module_key = "hot_keys";
        info.module_title = "全局热键";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::HotKeysModule(*info);
}
