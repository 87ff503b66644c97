#pragma once

#include <vector>

#include "services/module_base.h"
#include "services/module_info.h"

/// The two functions that a module library exports. A file that lacks one is ignored as a whole, in silence.
///
/// GetModuleInfo: the modules on offer; called once, when the libraries are loaded. The vector stays the
///   library's and is copied at once. Of two libraries that offer one id, the first one found keeps it.
/// CreateModule: a new object for the kind `info->module_id`, allocated with plain `new`; `info` lives for
/// the call
///   only and must be copied into `m_instance`. Never null. Widgets are not made with a parent here:
///   GetWidget is asked for them later.
///
/// Define both with PANELRY_EXPORT; panelry_add_module() in CMake hides everything else.
#define PANELRY_EXPORT extern "C" __attribute__((visibility("default")))

PANELRY_EXPORT std::vector<ModuleInfo>* GetModuleInfo();
PANELRY_EXPORT ModuleBase* CreateModule(InstanceInfo* info);

namespace panelry
{

using GetModuleInfoFunction = std::vector<ModuleInfo>* (*)();
using CreateModuleFunction = ModuleBase* (*)(InstanceInfo*);

}  // namespace panelry
