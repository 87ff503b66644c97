#include "hosting/module_library.h"
#include "quote_board/quote_board_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> modules = [] {
        ModuleInfo info;
        info.module_id = panelry::kQuoteBoardId;
        info.module_key = "quote_board";
        info.module_title = "行情报价";
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::QuoteBoardModule(*info);
}
