#include "common/only_module.h"
#include "hosting/module_library.h"
#include "ui_probe/ui_probe_module.h"

std::vector<ModuleInfo>* GetModuleInfo()
{
    return panelry::OnlyModule(panelry::kUiProbeId, "ui_probe", "UI 探针");
}

ModuleBase* CreateModule(InstanceInfo* info)
{
    return new panelry::UiProbeModule(*info);
}
