#include "hosting/operate_message.h"

#include <QString>
#include <QVariantMap>
#include <QWidget>
#include <stdexcept>
#include <utility>

#include "base/number_text.h"
#include "hosting/widget_properties.h"

namespace panelry
{

namespace
{

using nlohmann::json;

// The library parses without recursion but copies and prints with it: a text nested some ten thousand deep
// would overflow the stack. No real message comes near this.
constexpr int kDeepest = 512;

json Parse(const std::string& text)
{
    return json::parse(text, [](int depth, json::parse_event_t, json&) {
        if (depth > kDeepest) {
            throw std::length_error("nested too deep");
        }
        return true;
    });
}

// Each throws when the value isn't a string; an absent key leaves the default.
void Read(const json& root, const char* key, std::string& value)
{
    if (root.contains(key)) {
        value = root.at(key).get<std::string>();
    }
}

void Read(const json& root, const char* key, int& value)
{
    if (root.contains(key)) {
        value = TextToInt(root.at(key).get_ref<const std::string&>());
    }
}

void Read(const json& root, const char* key, bool& flag)
{
    if (root.contains(key)) {
        flag = root.at(key).get_ref<const std::string&>() == "1";
    }
}

// Text that isn't JSON and a value of the wrong type both end the reading, silently.
template <class Reader>
void ReadWhatStands(const std::string& text, Reader reader)
{
    if (text.empty()) {
        return;
    }
    try {
        reader(Parse(text));
    } catch (...) {
    }
}

json ModuleData(const QWidget& source)
{
    json data = json::object();
    const QVariantMap values = source.property(kModuleData).toMap();
    for (auto value = values.begin(); value != values.end(); ++value) {
        data[value.key().toStdString()] = value.value().toString().toStdString();
    }
    return data;
}

}  // namespace

OperateMessage ReadOperateMessage(const std::string& text)
{
    OperateMessage message;
    message.business = text;
    ReadWhatStands(text, [&message](const json& root) {
        // The order matters: it decides what stands in front of a bad value.
        Read(root, "operate", message.operate);
        Read(root, "bussiness", message.business);
        Read(root, "cmd", message.command);
        Read(root, "always_display", message.alwaysDisplay);
        Read(root, "need_display", message.needDisplay);
        bool needWrapper = false;  // of no use here, but a bad value ends the reading
        Read(root, "need_wrapper", needWrapper);
        Read(root, "need_create_new", message.needCreateNew);
    });
    return message;
}

CreationMessage ReadCreationMessage(const std::string& text)
{
    CreationMessage message;
    ReadWhatStands(text, [&message](const json& root) {
        Read(root, "need_display", message.needDisplay);
        Read(root, "need_wrapper", message.needWrapper);
        Read(root, "ignord_lock_hide", message.ignoreLockHide);
        if (root.contains("init_param")) {
            message.initParam = root.at("init_param");
        }
    });
    return message;
}

std::string CreationText(const CreationMessage& message, const QWidget* source)
{
    json text;
    text["create_source"] = "panelry";
    if (source) {
        text["init_data"] = ModuleData(*source);
    }
    text["init_param"] = message.initParam;
    text["need_display"] = message.needDisplay ? "1" : "0";
    return text.dump();
}

std::string PushText(const std::string& text)
{
    std::string pushed = text;
    ReadWhatStands(text, [&pushed](const json& root) {
        if (root.contains("init_param")) {
            pushed = root.at("init_param").dump(0);
        }
    });
    return pushed;
}

}  // namespace panelry
