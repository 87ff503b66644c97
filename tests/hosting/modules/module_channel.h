#pragma once

#include <functional>
#include <vector>

#include "services/module_base.h"

namespace panelry::test
{

/// What the channel library offers and makes. A test hangs one of these on the application object, as a void*
/// under kChannelProperty, before the library is loaded.
struct ModuleChannel {
    std::vector<ModuleInfo> offers;
    std::function<ModuleBase*(const InstanceInfo&)> make;
};

inline constexpr char kChannelProperty[] = "panelry_test_module_channel";

}  // namespace panelry::test
