// Hot key registrations of any content against a plain model: the tables as they are described, searched anew for
// each event.
//
// An input is a row of requests, each ended by a NUL: one byte for what to do and to which of three modules, then the
// text.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "input/hook_registrations.h"
#include "services/module_base.h"

namespace
{

using Json = nlohmann::json;
using panelry::HookRegistrations;

void Check(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

class Module : public ModuleBase
{
public:
    void Initialize(int, const char*, const char*, const char*) override {}
    void OnMessage(int msgId, void*) override
    {
        Check(msgId == 119, "another message");
        m_order->push_back(this);
    }
    std::vector<ModuleBase*>* m_order = nullptr;
};

// What the fuzzer is to find by itself: texts that name these.
const std::array<uiohook_event, 6>& Events()
{
    static const std::array<uiohook_event, 6> events = [] {
        std::array<uiohook_event, 6> made{};
        const auto key = [](uiohook_event& event, event_type type, std::uint16_t mask, std::uint16_t code) {
            event.type = type;
            event.mask = mask;
            event.data.keyboard.keycode = code;
        };
        key(made[0], EVENT_KEY_PRESSED, 0, VC_A);
        key(made[1], EVENT_KEY_PRESSED, 0x03, VC_A);
        key(made[2], EVENT_KEY_RELEASED, 0x88, VC_F1);
        key(made[3], EVENT_KEY_TYPED, 0, VC_UNDEFINED);
        made[4].type = EVENT_MOUSE_CLICKED;
        made[5].type = EVENT_MOUSE_WHEEL;
        return made;
    }();
    return events;
}

const char* const kNames[] = {"a", "ctrl+shift+a", "alt+f1"};

std::string Normal(const std::string& text)
{
    const std::string capitals = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string normal;
    for (const char c : text) {
        const std::size_t capital = capitals.find(c);
        if (capital != std::string::npos) {
            normal += "abcdefghijklmnopqrstuvwxyz"[capital];
        } else if (std::string_view(" \t\n\v\f\r").find(c) == std::string_view::npos) {
            normal += c;
        }
    }
    return normal;
}

// By hand, digit by digit.
int Number(const std::string& text)
{
    std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
    bool negative = false;
    if (at != std::string::npos && (text[at] == '+' || text[at] == '-')) {
        negative = text[at++] == '-';
    }
    long long number = 0;
    bool any = false;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, any = true) {
        number = std::min(number * 10 + (text[at] - '0'), 1LL << 40);
    }
    number = negative ? -number : number;
    if (!any || number > 2147483647LL || number < -2147483648LL) {
        throw std::invalid_argument("no number");
    }
    return static_cast<int>(number);
}

class Model
{
public:
    void Register(ModuleBase* module, const std::string& text)
    {
        const Json json = Json::parse(text);
        std::vector<ModuleBase*>& list = m_types[Number(json.at("hook_type").get<std::string>())];
        if (std::count(list.begin(), list.end(), module) == 0) {
            list.push_back(module);
        }
        if (json.contains("keyboard_value") && json["keyboard_value"].is_array()) {
            m_filters.erase(module);
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
        const int type = Number(Json::parse(text).at("hook_type").get<std::string>());
        std::erase(m_types[type], module);
        if (type == 3 || type == 4 || type == 5) {
            m_filters.erase(module);
        }
    }

    void Forget(ModuleBase* module)
    {
        Unregister(module, "");
        m_filters.erase(module);
    }

    void Clear()
    {
        m_types.clear();
        m_filters.clear();
    }

    std::vector<ModuleBase*> Hearers(std::size_t number)
    {
        const int type = Events()[number].type;
        std::vector<ModuleBase*> hearers;
        for (ModuleBase* const module : m_types[type]) {
            const auto filter = m_filters.find(module);
            const bool filtered =
                (type == 4 || type == 5) && filter != m_filters.end() && !filter->second.empty();
            if (!filtered || filter->second.count(kNames[number]) > 0) {
                hearers.push_back(module);
            }
        }
        return hearers;
    }

private:
    std::map<int, std::vector<ModuleBase*>> m_types;
    std::map<ModuleBase*, std::set<std::string>> m_filters;
};

template <class Operation>
bool Throws(Operation operation)
{
    try {
        operation();
        return false;
    } catch (const std::exception&) {
        return true;
    }
}

template <class Service>
bool Do(Service& service, unsigned what, ModuleBase* module, const char* text)
{
    return Throws([&] {
        switch (what) {
            case 0:
            case 1:
            case 2:
                service.Register(module, text);
                break;
            case 3:
            case 4:
                service.Unregister(module, text);
                break;
            case 5:
                service.Forget(module);
                break;
            default:
                service.Clear();
        }
    });
}

void CompareDeliveries(HookRegistrations& registrations, Model& model, std::vector<ModuleBase*>& order)
{
    for (std::size_t number = 0; number < Events().size(); ++number) {
        order.clear();
        uiohook_event event = Events()[number];
        if (event.type == EVENT_KEY_PRESSED || event.type == EVENT_KEY_RELEASED) {
            registrations.DeliverKey(&event);
        } else {
            registrations.DeliverPlain(&event);
        }
        Check(order == model.Hearers(number), "others hear it");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr unsigned kModules = 3;
    constexpr unsigned kActs = 7;
    HookRegistrations registrations;
    Model model;
    std::vector<ModuleBase*> order;
    std::array<Module, kModules> modules;
    for (Module& module : modules) {
        module.m_order = &order;
    }
    for (std::string_view rest(reinterpret_cast<const char*>(data), size); !rest.empty();) {
        const auto act = static_cast<unsigned char>(rest.front());
        const std::size_t end = std::min(rest.find('\0', 1), rest.size());
        const std::string text(rest.substr(1, end - 1));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        Module& module = modules[act / kActs % kModules];
        const bool threw = Do(registrations, act % kActs, &module, text.c_str());
        Check(threw == Do(model, act % kActs, &module, text.c_str()), "another error");
        CompareDeliveries(registrations, model, order);
    }
    return 0;
}
