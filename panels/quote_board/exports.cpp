#include "common/only_module.h"
#include "hosting/module_library.h"
#include "quote_board/quote_board_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kQuoteBoardId, "quote_board", "行情报价");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::QuoteBoardModule(*info);
}
