#pragma once

#include <cstdint>
#include <vector>

#include "services/module_info.h"

namespace panelry
{

/// What GetModuleInfo of a library with one kind of module returns. Lives as long as the library.
inline std::vector<ModuleInfo>* OnlyModule(std::uint32_t id, const char* key, const char* title)
{
    static std::vector<ModuleInfo> modules = [=] {
        ModuleInfo info;
        info.module_id = id;
        info.module_key = key;
        info.module_title = title;
        return std::vector<ModuleInfo>{info};
    }();
    return &modules;
}

}  // namespace panelry
