// Hot key registrations of any content against a plain model: the tables as they are described, searched anew for
// each event.
//
// An input is a row of requests, each ended by a NUL: one byte for what to do and to which of three modules, then the
// text.

#include <algorithm>
#include <cctype>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "input/hook_registrations.h"
#include "services/module_base.h"

namespace
{

using Json = nlohmann::json;
using panelry::HookRegistrations;

using Modules = std::vector<ModuleBase*>;

class Module : public ModuleBase
{
public:
    explicit Module(Modules& order) : m_order(order) {}
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int msgId, void*) override
    {
        Check(msgId == 119, "another message");
        m_order.push_back(this);
    }

private:
    Modules& m_order;
};

// What the fuzzer is to find by itself: texts that name these.
struct {
    int type;
    int mask;
    int code;
    const char* name;
} const kEvents[] = {{EVENT_KEY_PRESSED, 0, VC_A, "a"},
                     {EVENT_KEY_PRESSED, 0x03, VC_A, "ctrl+shift+a"},
                     {EVENT_KEY_RELEASED, 0x88, VC_F1, "alt+f1"},
                     {EVENT_KEY_TYPED, 0, VC_UNDEFINED, ""},
                     {EVENT_MOUSE_CLICKED, 0, 0, ""},
                     {EVENT_MOUSE_WHEEL, 0, 0, ""}};

bool OfKeys(int type)
{
    return type == 4 || type == 5;
}

// In the locale "C".
std::string Normal(const std::string& text)
{
    std::string normal;
    for (const char letter : text) {
        const auto c = static_cast<unsigned char>(letter);
        if (std::isspace(c) == 0) {
            normal += static_cast<char>(std::tolower(c));
        }
    }
    return normal;
}

class Model
{
public:
    void Register(ModuleBase* module, const std::string& text)
    {
        const Json json = Json::parse(text);
        Modules& list = m_types[std::stoi(json.at("hook_type").get<std::string>())];
        if (std::count(list.begin(), list.end(), module) == 0) {
            list.push_back(module);
        }
        if (json.contains("keyboard_value") && json["keyboard_value"].is_array()) {
            m_filters.erase(module);  // gone even if the new one can't be read
            std::set<std::string> filter;
            for (const Json& value : json["keyboard_value"]) {
                filter.insert(Normal(value.get<std::string>()));
            }
            m_filters[module] = filter;
        }
    }

    void Unregister(ModuleBase* module, const std::string& text)
    {
        if (text.empty()) {
            for (auto& [type, list] : m_types) {
                std::erase(list, module);
            }
            return;
        }
        const int type = std::stoi(Json::parse(text).at("hook_type").get<std::string>());
        std::erase(m_types[type], module);
        if (type == 3 || OfKeys(type)) {
            m_filters.erase(module);
        }
    }

    void Forget(ModuleBase* module)
    {
        Unregister(module, "");
        m_filters.erase(module);
    }
    void Clear() { *this = {}; }

    Modules Hearers(int type, const char* name)
    {
        Modules hearers;
        for (ModuleBase* const module : m_types[type]) {
            const auto filter = m_filters.find(module);
            if (!OfKeys(type) || filter == m_filters.end() || filter->second.empty() ||
                filter->second.count(name) > 0) {
                hearers.push_back(module);
            }
        }
        return hearers;
    }

private:
    std::map<int, Modules> m_types;
    std::map<ModuleBase*, std::set<std::string>> m_filters;
};

// True if it throws.
template <class Service>
bool Do(Service& service, unsigned what, ModuleBase* module, const std::string& text)
{
    try {
        if (what < 3) {
            service.Register(module, text.c_str());
        } else if (what < 5) {
            service.Unregister(module, text.c_str());
        } else if (what == 5) {
            service.Forget(module);
        } else {
            service.Clear();
        }
        return false;
    } catch (const std::exception&) {
        return true;
    }
}

void CompareDeliveries(HookRegistrations& registrations, Model& model, Modules& order)
{
    for (const auto& [type, mask, code, name] : kEvents) {
        uiohook_event event{};
        event.type = static_cast<event_type>(type);
        event.mask = static_cast<std::uint16_t>(mask);
        event.data.keyboard.keycode = static_cast<std::uint16_t>(code);
        order.clear();
        if (OfKeys(type)) {
            registrations.DeliverKey(&event);
        } else {
            registrations.DeliverPlain(&event);
        }
        Check(order == model.Hearers(type, name), "others hear it");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr unsigned kActs = 7;
    HookRegistrations registrations;
    Model model;
    Modules order;
    Module modules[] = {Module(order), Module(order), Module(order)};
    for (std::string_view rest(reinterpret_cast<const char*>(data), size); !rest.empty();) {
        const auto act = static_cast<unsigned char>(rest.front());
        const std::size_t end = std::min(rest.find('\0', 1), rest.size());
        const std::string text(rest.substr(1, end - 1));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        Module& module = modules[act / kActs % std::size(modules)];
        const bool threw = Do(registrations, act % kActs, &module, text);
        Check(threw == Do(model, act % kActs, &module, text.c_str()), "another error");
        CompareDeliveries(registrations, model, order);
    }
    return 0;
}
