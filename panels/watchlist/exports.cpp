#include "hosting/module_library.h"
#include "watchlist/watchlist_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kWatchlistPanelId;
        info.module_key = "watchlist";
        info.module_title = "自选股";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::WatchlistModule(*info);
}
