#pragma once

#include <nlohmann/json.hpp>
#include <string>

class QWidget;

/// The texts that the host sends and the text that a new module gets: what their keys say, without any of the
/// windows. Pure functions; any thread.
namespace panelry
{

/// An operate message as the dispatcher reads it. Every value but "init_param" is a JSON string; the first
/// value of another type ends the reading, and what was read before stands.
struct OperateMessage {
    std::string operate;  ///< "operate": the verb
    std::string
        business;      ///< "bussiness", as the host spells it: text for the module; else the whole message
    int command = -1;  ///< "cmd": the message id for the module; -1 means none
    bool alwaysDisplay = false;  ///< "always_display": "clicked" shows instead of toggling
    bool needDisplay = true;     ///< "need_display": visibility after creation
    bool needCreateNew = true;   ///< "need_create_new": "notify" may open the missing component
};
OperateMessage ReadOperateMessage(const std::string& text);

/// The same kind of message as the creation of a panel reads it. "need_display" is false here when absent, on
/// purpose: a "clicked" without it makes a hidden panel, which the dispatcher then shows.
struct CreationMessage {
    bool needDisplay = false;
    bool needWrapper = false;     ///< "need_wrapper": the panel stands in a frame
    bool ignoreLockHide = false;  ///< "ignord_lock_hide": "show" and "hide" to all pass over it
    nlohmann::json initParam;     ///< "init_param", any JSON; null when absent
};
CreationMessage ReadCreationMessage(const std::string& text);

/// The argument of ModuleBase::Initialize. `source` is the widget that is cloned, null for a panel of its
/// own.
std::string CreationText(const CreationMessage& message, const QWidget* source);

/// What push data hands to a panel: the text of its "init_param", one element a line, or the whole text.
std::string PushText(const std::string& text);

}  // namespace panelry
