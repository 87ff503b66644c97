#pragma once

#include <cstdint>
#include <string>

/// One module that a library offers, and the record from which a module object is made.
/// The order of fields is binary contract between library and modules; append nothing, reorder nothing.

struct ModuleInfo {
    std::uint8_t module_kind = 1;  ///< carried unchanged, never tested
    /// The module's number: the `id` of NotifyMsg and the target of SendModuleMessage. Both are signed there,
    /// so ids from 2^31 up can't be addressed singly; stay below.
    std::uint32_t module_id = 0;
    std::string module_key;    ///< carried unchanged, never read
    std::string module_title;  ///< UTF-8; title bar and window title of the frame
    std::string module_extra;  ///< carried unchanged, never read
};

/// What CreateModule is given. A module copies it into ModuleBase::m_instance, or it gets no message by its
/// module id and no title.
struct InstanceInfo : ModuleInfo {
    std::uint32_t group_id = 0;  ///< the group inside the frame in which the module is created
    std::string instance_text;   ///< always empty when it comes from the library
};
