#include "common/only_module.h"
#include "hosting/module_library.h"
#include "hot_keys/hot_keys_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kHotKeysPanelId, "hot_keys", "全局热键");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::HotKeysModule(*info);
}
