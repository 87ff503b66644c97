#include "common/only_module.h"
#include "hosting/module_library.h"
#include "watchlist/watchlist_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kWatchlistPanelId, "watchlist", "自选股");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::WatchlistModule(*info);
}
