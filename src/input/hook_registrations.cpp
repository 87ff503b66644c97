#include "input/hook_registrations.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "hosting/message_ids.h"
#include "input/key_names.h"
#include "services/module_base.h"

namespace panelry
{

namespace
{

using Json = nlohmann::json;

constexpr char kHookType[] = "hook_type";
constexpr char kKeyboardValue[] = "keyboard_value";

// Whose delivery runs on this thread; a module that takes itself out from there can't wait for its own return.
thread_local const HookRegistrations* DeliveringHere = nullptr;

// A decimal number as the head of the text; anything behind it is ignored.
int ParseType(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    int type = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), type);
    if (result.ec == std::errc::result_out_of_range) {
        throw std::out_of_range("hook_type is out of range");
    }
    if (result.ec != std::errc()) {
        throw std::invalid_argument("hook_type is not a number");
    }
    return type;
}

// Without "hook_type" the error is that of a null in its place.
int TypeOf(Json& registration)
{
    return ParseType(registration[kHookType].get<std::string>());
}

bool IsOfKeys(int type)
{
    return type >= EVENT_KEY_TYPED && type <= EVENT_KEY_RELEASED;
}

}  // namespace

void HookRegistrations::Register(ModuleBase* module, const char* text)
{
    Json registration = Json::parse(text);
    const int type = TypeOf(registration);
    const std::lock_guard guard(m_lock);
    TablesChanged();
    std::vector<ModuleBase*>& listeners = m_typeListeners[type];
    if (std::find(listeners.begin(), listeners.end(), module) == listeners.end()) {
        listeners.push_back(module);
    }
    const auto value = registration.find(kKeyboardValue);
    if (value == registration.end() || !value->is_array()) {
        return;
    }
    m_keyFilters.erase(module);  // gone even if the new ones can't be read
    auto combinations = std::make_shared<Combinations>();
    for (const Json& combination : *value) {
        combinations->push_back(NormalizedCombination(combination.get<std::string>()));
    }
    m_keyFilters[module] = std::move(combinations);
}

void HookRegistrations::Unregister(ModuleBase* module, const char* text)
{
    if (*text == '\0') {
        {
            const std::lock_guard guard(m_lock);
            TablesChanged();
            for (auto& [type, listeners] : m_typeListeners) {
                std::erase(listeners, module);
            }
        }
        WaitForDelivery();
        return;
    }
    Json registration = Json::parse(text);
    const int type = TypeOf(registration);
    {
        const std::lock_guard guard(m_lock);
        TablesChanged();
        if (const auto listeners = m_typeListeners.find(type); listeners != m_typeListeners.end()) {
            std::erase(listeners->second, module);
        }
        if (IsOfKeys(type)) {
            m_keyFilters.erase(module);
        }
    }
    WaitForDelivery();
}

void HookRegistrations::Forget(ModuleBase* module)
{
    {
        const std::lock_guard guard(m_lock);
        TablesChanged();
        for (auto& [type, listeners] : m_typeListeners) {
            std::erase(listeners, module);
        }
        m_keyFilters.erase(module);
    }
    WaitForDelivery();
}

void HookRegistrations::Clear()
{
    {
        const std::lock_guard guard(m_lock);
        TablesChanged();
        m_typeListeners.clear();
        m_keyFilters.clear();
    }
    WaitForDelivery();
}

void HookRegistrations::TablesChanged()
{
    ++m_version;
    m_roads.clear();
}

// An event that began before the tables changed may still be on its way to a module that they held.
void HookRegistrations::WaitForDelivery() const
{
    const std::uint32_t now = m_event.load();
    if (now % 2 == 1 && DeliveringHere != this) {
        m_event.wait(now);
    }
}

std::shared_ptr<const HookRegistrations::Road> HookRegistrations::RoadOf(int type)
{
    const std::lock_guard guard(m_lock);
    std::shared_ptr<const Road>& kept = m_roads[type];
    if (!kept) {
        auto road = std::make_shared<Road>();
        road->version = m_version;
        if (const auto listeners = m_typeListeners.find(type); listeners != m_typeListeners.end()) {
            for (ModuleBase* const module : listeners->second) {
                road->receivers.push_back(ReceiverOf(module));
            }
        }
        kept = std::move(road);
    }
    return kept;
}

// With the lock held.
HookRegistrations::Receiver HookRegistrations::ReceiverOf(ModuleBase* module) const
{
    const auto filter = m_keyFilters.find(module);
    if (filter == m_keyFilters.end()) {
        return {module, {}, nullptr};
    }
    return {module, *filter->second, filter->second};
}

// As the tables are now; nobody when the module listens no more.
HookRegistrations::Receiver HookRegistrations::StillListening(ModuleBase* module, int type) const
{
    const std::lock_guard guard(m_lock);
    const auto listeners = m_typeListeners.find(type);
    const bool listens =
        listeners != m_typeListeners.end() &&
        std::find(listeners->second.begin(), listeners->second.end(), module) != listeners->second.end();
    return listens ? ReceiverOf(module) : Receiver{};
}

void HookRegistrations::DeliverPlain(uiohook_event* event)
{
    Deliver(event, [](const Receiver&) { return true; });
}

void HookRegistrations::DeliverKey(uiohook_event* event)
{
    std::string name;  // worked out for the first module that asks
    Deliver(event, [&name, event](const Receiver& receiver) {
        if (receiver.only.empty()) {
            return true;
        }
        if (name.empty()) {
            name = KeyEventName(*event);
        }
        return std::find(receiver.only.begin(), receiver.only.end(), name) != receiver.only.end();
    });
}

template <class Hears>
void HookRegistrations::Deliver(uiohook_event* event, Hears hears)
{
    ++m_event;  // before the look into the tables: who changes them later sees it
    const HookRegistrations* const outer = std::exchange(DeliveringHere, this);
    const std::shared_ptr<const Road> road = RoadOf(event->type);
    const auto deliver = [event, &hears](const Receiver& receiver) {
        if (hears(receiver)) {
            receiver.module->OnMessage(kHookEvent, event);
        }
    };
    for (const Receiver& known : road->receivers) {
        if (road->version == m_version) {
            deliver(known);
        } else if (const Receiver now = StillListening(known.module, event->type); now.module) {
            deliver(now);  // a module ahead of it may have given it another list
        }
    }
    DeliveringHere = outer;
    ++m_event;
    m_event.notify_all();
}

}  // namespace panelry
