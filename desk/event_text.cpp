#include "desk/event_text.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace panelry::desk
{

namespace
{

/// A text on one line that doesn't move a terminal's cursor, another value as JSON.
std::string Shown(const Fields& value)
{
    std::string json = value.dump(-1, ' ', false, Fields::error_handler_t::replace);
    if (!value.is_string()) {
        return json;
    }
    auto text = Fields::parse(json).get<std::string>();
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; },
        ' ');
    return text;
}

/// The field's text; empty where it is missing.
std::string Field(const Fields& fields, const char* key)
{
    const auto found = fields.find(key);
    return found == fields.end() ? "" : Shown(*found);
}

/// "  12.345".
std::string Seconds(std::chrono::milliseconds at)
{
    const std::string thousandths = std::to_string(at.count() % 1000);
    std::string text =
        std::to_string(at.count() / 1000) + '.' + std::string(3 - thousandths.size(), '0') + thousandths;
    return std::string(text.size() < 9 ? 9 - text.size() : 0, ' ') + text;
}

/// "key value" for all fields that aren't left out.
std::string Rest(const Fields& fields, std::initializer_list<const char*> leftOut)
{
    std::string text;
    for (const auto& [key, value] : fields.items()) {
        const auto named = [&key = key](const char* name) { return key == name; };
        if (std::none_of(leftOut.begin(), leftOut.end(), named)) {
            text += (text.empty() ? "" : ", ") + key + ' ' + Shown(value);
        }
    }
    return text;
}

std::string Security(const Fields& fields)
{
    return Field(fields, "code") + ' ' + Field(fields, "name");
}

/// "1001 normal buy 600000 演示银行 10.05 x 1000, dealt 500, sent".
std::string OrderText(const Fields& order)
{
    const std::string reason = Field(order, "reason");
    return Field(order, "contract") + ' ' + Field(order, "account") + ' ' + Field(order, "side") + ' ' +
           Security(order) + ' ' + Field(order, "price") + " x " + Field(order, "quantity") + ", dealt " +
           Field(order, "dealt") + ", " + Field(order, "state") + (reason.empty() ? "" : ": " + reason);
}

std::string DealText(const Fields& deal)
{
    return Field(deal, "contract") + ' ' + Field(deal, "account") + ' ' + Field(deal, "side") + ' ' +
           Security(deal) + ' ' + Field(deal, "price") + " x " + Field(deal, "quantity") + ", worth " +
           Field(deal, "worth") + ", fees " + Field(deal, "fees");
}

std::string HoldingText(const Fields& holding)
{
    return Field(holding, "account") + ' ' + Security(holding) + ", " +
           Rest(holding, {"account", "code", "market", "name"});
}

std::string SideText(const Fields& levels)
{
    std::string text;
    for (const Fields& level : levels) {
        text += "  " + Shown(level.at(0)) + " x " + Shown(level.at(1));
    }
    return text.empty() ? "  nobody" : text;
}

std::string QuoteText(const Fields& quote)
{
    return Security(quote) + ": " + Rest(quote, {"code", "market", "name", "bids", "asks"}) + "\n  sell" +
           SideText(quote.at("asks")) + "\n  buy " + SideText(quote.at("bids"));
}

/// Head line, then a line for each entry of the list `key`.
std::string ListText(const Fields& fields, const char* key, std::string (*entryText)(const Fields&))
{
    const Fields& entries = fields.at(key);
    std::string text = entries.empty() ? "none" : std::to_string(entries.size());
    for (const Fields& entry : entries) {
        text += "\n  " + entryText(entry);
    }
    return text;
}

std::string FundsText(const Fields& funds)
{
    return Field(funds, "account") + ", " + Rest(funds, {"account"});
}

std::string ScenarioHelp(const Fields& scenario)
{
    const std::string arguments = Field(scenario, "arguments");
    return Field(scenario, "name") + (arguments.empty() ? "" : ' ' + arguments) + ": " +
           Field(scenario, "help");
}

/// "late off, 2000".
std::string FaultText(const Fields& fault)
{
    const std::string number = Field(fault, "number");
    return (Field(fault, "on") == "true" ? "on" : "off") + (number.empty() ? "" : ", " + number);
}

std::string FaultHelp(const Fields& fault)
{
    return Field(fault, "name") + " (" + FaultText(fault) + "): " + Field(fault, "help");
}

std::string FaultSwitchText(const Fields& fault)
{
    return Field(fault, "fault") + ' ' + FaultText(fault);
}

std::string ScenarioText(const Fields& scenario)
{
    std::string text = Field(scenario, "scenario");
    for (const Fields& argument : scenario.at("arguments")) {
        text += ' ' + Shown(argument);
    }
    return text;
}

std::string PhaseText(const Fields& phase)
{
    return Field(phase, "phase") + ", day " + Field(phase, "day") + ", " + Field(phase, "time");
}

/// The reason, the note: a text that says all.
std::string FirstText(const Fields& fields)
{
    return fields.empty() ? "" : Shown(*fields.begin());
}

std::string SentText(const Fields& fields)
{
    const std::string type = Field(fields, "type");
    return (type == "0"   ? "operate"
            : type == "1" ? "push"
                          : type) +
           ' ' + Field(fields, "id") + ' ' + Field(fields, "text");
}

std::string CallbackText(const Fields& fields)
{
    return Field(fields, "code") + ' ' + Rest(fields, {"code"});
}

std::string OrdersText(const Fields& fields)
{
    return ListText(fields, "orders", &OrderText);
}
std::string DealsText(const Fields& fields)
{
    return ListText(fields, "deals", &DealText);
}
std::string HoldingsText(const Fields& fields)
{
    return ListText(fields, "holdings", &HoldingText);
}
std::string AllFundsText(const Fields& fields)
{
    return ListText(fields, "funds", &FundsText);
}
std::string ScenariosText(const Fields& fields)
{
    return ListText(fields, "scenarios", &ScenarioHelp);
}
std::string FaultsText(const Fields& fields)
{
    return ListText(fields, "faults", &FaultHelp);
}

struct Form {
    std::string_view event;
    std::string (*text)(const Fields& fields);
};

constexpr Form kForms[] = {
    {"sent", &SentText},           {"callback", &CallbackText}, {"order", &OrderText},
    {"deal", &DealText},           {"quote", &QuoteText},       {"orders", &OrdersText},
    {"deals", &DealsText},         {"holdings", &HoldingsText}, {"funds", &AllFundsText},
    {"scenarios", &ScenariosText}, {"faults", &FaultsText},     {"scenario", &ScenarioText},
    {"fault", &FaultSwitchText},   {"phase", &PhaseText},       {"stop", &FirstText},
    {"note", &FirstText},          {"trouble", &FirstText},
};

}  // namespace

std::string EventJson(std::chrono::milliseconds at, std::string_view event, const Fields& fields)
{
    Fields line{{"at", at.count()}, {"event", event}};
    line.update(fields);
    return line.dump(-1, ' ', false, Fields::error_handler_t::replace) + '\n';
}

std::string EventText(std::chrono::milliseconds at, std::string_view event, const Fields& fields)
{
    const auto* const form = std::find_if(std::begin(kForms), std::end(kForms),
                                          [event](const Form& known) { return known.event == event; });
    const std::string what = form == std::end(kForms) ? Rest(fields, {}) : form->text(fields);
    return Seconds(at) + "  " + std::string(event) + (what.empty() ? "" : "  " + what) + '\n';
}

}  // namespace panelry::desk
