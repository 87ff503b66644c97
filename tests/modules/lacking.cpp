// Module libraries of which nothing may come: each lacks an export, or offers nothing.

#include <cstdlib>

#include "hosting/module_library.h"

#ifdef PANELRY_TEST_GET_MODULE_INFO
std::vector<ModuleInfo>* GetModuleInfo()
{
    static std::vector<ModuleInfo> offered;
#ifndef PANELRY_TEST_EMPTY
    offered.resize(1);
    offered.front().module_id = 4001;
#endif
    return &offered;
}
#endif

#ifdef PANELRY_TEST_CREATE_MODULE
ModuleBase* CreateModule(InstanceInfo* /*info*/)
{
    std::abort();  // nobody was offered anything
}
#endif
