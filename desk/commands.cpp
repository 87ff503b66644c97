#include "desk/commands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "desk/providers/faults.h"
#include "desk/providers/host_words.h"
#include "desk/providers/scenarios.h"
#include "desk/strict_json.h"

namespace panelry::desk
{

namespace
{

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::int32_t kOperate = 0;
constexpr std::int32_t kPush = 1;
constexpr std::int32_t kProbe = 41009;
constexpr std::int32_t kProbeRequest = 9100;

/// The whole text as a number, or nothing.
template <class Number>
std::optional<Number> Whole(std::string_view text)
{
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty() ? std::optional(number) : std::nullopt;
}

/// The words of one command behind its name; what nobody takes is too much.
class Arguments
{
public:
    explicit Arguments(std::string_view text) : m_rest(Trimmed(text)) {}

    [[nodiscard]] bool Any() const { return !m_rest.empty(); }
    [[nodiscard]] std::string_view Rest() const { return m_rest; }

    std::string_view Take()
    {
        const std::string_view word = m_rest.substr(0, m_rest.find_first_of(" \t"));
        m_rest = Trimmed(m_rest.substr(word.size()));
        return word;
    }
    std::string_view TakeRest() { return std::exchange(m_rest, {}); }

    std::string_view Need(const char* what)
    {
        if (!Any()) {
            throw BadText(std::string(what) + " is missing");
        }
        return Take();
    }

    std::int32_t NeedNumber(const char* what)
    {
        const std::string_view word = Need(what);
        const std::optional<std::int32_t> number = ParseNumber(word);
        if (!number) {
            throw BadText(std::string(what) + " must be a 32-bit number, not " + Quoted(word));
        }
        return *number;
    }

    Quantity NeedQuantity(const char* what)
    {
        const std::string_view word = Need(what);
        const std::optional<Quantity> quantity = ReadQuantity(word);
        if (!quantity || *quantity == 0) {
            throw BadText(std::string(what) + " must be a whole number above 0, not " + Quoted(word));
        }
        return *quantity;
    }

private:
    std::string_view m_rest;
};

// ---- to the panels

Message Operate(std::int32_t id, const Json& keys)
{
    return {kOperate, id, keys.dump()};
}

Message Notify(std::int32_t id, std::int32_t command, std::string_view text, const char* createsNew)
{
    return Operate(id, {{"operate", "notify"},
                        {"cmd", std::to_string(command)},
                        {"bussiness", std::string(text)},
                        {"need_create_new", createsNew}});
}

Act OpenCommand(Arguments& words)
{
    return Operate(
        words.NeedNumber("ID"),
        {{"operate", "clicked"}, {"need_wrapper", "1"}, {"need_display", "1"}, {"always_display", "1"}});
}

Act ToggleCommand(Arguments& words)
{
    return Operate(words.NeedNumber("ID"),
                   {{"operate", "clicked"}, {"need_wrapper", "1"}, {"need_display", "1"}});
}

Act ShowCommand(Arguments& words)
{
    return Operate(words.NeedNumber("ID"), {{"operate", "show"}});
}

Act HideCommand(Arguments& words)
{
    return Operate(words.NeedNumber("ID"), {{"operate", "hide"}});
}

// A panel that isn't open stays so: made by "notify" it would stand without a frame, and hidden.
Act NotifyCommand(Arguments& words)
{
    const std::int32_t id = words.NeedNumber("ID");
    const std::int32_t command = words.NeedNumber("CMD");
    return Notify(id, command, words.TakeRest(), "0");
}

// The probe needs no frame: the first request makes it.
Act ProbeCommand(Arguments& words)
{
    const std::string request = ParseObject(words.TakeRest()).dump();
    return Notify(kProbe, kProbeRequest, request, "1");
}

Act PushCommand(Arguments& words)
{
    const std::int32_t id = words.NeedNumber("ID");
    if (!words.Any()) {
        throw BadText("TEXT is missing");
    }
    return Message{kPush, id, std::string(words.TakeRest())};
}

Act DestroyUiCommand(Arguments& /*words*/)
{
    return Message{kOperate, -1, "destroyui"};
}

Act QuitCommand(Arguments& /*words*/)
{
    return Quit{};
}

Act HelpCommand(Arguments& words)
{
    Help help{std::string(words.Take())};
    if (!help.command.empty() && !FindCommand(help.command)) {
        throw BadText("there is no command " + Quoted(help.command));
    }
    return help;
}

// ---- on the market

Side ParseSide(std::string_view word)
{
    if (word == "buy") {
        return Side::Buy;
    }
    if (word == "sell") {
        return Side::Sell;
    }
    throw BadText("must be buy or sell, not " + Quoted(word));
}

std::optional<AccountKind> FindAccount(std::string_view word)
{
    for (const AccountKind account : kAccounts) {
        if (word == AccountName(account)) {
            return account;
        }
    }
    return std::nullopt;
}

void TakeAccountAndFunding(Arguments& words, PlaceOrder& order)
{
    bool named = false;
    while (words.Any()) {
        const std::string_view word = words.Take();
        const std::optional<AccountKind> account = FindAccount(word);
        if (account) {
            order.account = *account;
            named = true;
        } else if (word == "borrowed" || word == "payback") {
            order.funding = word == "borrowed" ? Funding::Borrowed : Funding::PayBack;
        } else {
            throw BadText(Quoted(word) + " is none of normal, margin, connect, borrowed, payback");
        }
    }
    if (order.funding != Funding::Own) {
        if (named && order.account != AccountKind::Margin) {
            throw BadText("only the margin account borrows and pays back");
        }
        order.account = AccountKind::Margin;
    }
}

MarketAct Asked(MarketCommand command)
{
    return {std::move(command), {}};
}

Act OrderCommand(Arguments& words)
{
    PlaceOrder order;
    order.side = ParseSide(words.Need("buy or sell"));
    order.security = ParseCode(words.Need("CODE"));
    const std::string_view price = words.Need("PRICE");
    const std::optional<Price> read = ReadPrice(price);
    if (!read || *read <= 0) {
        throw BadText("PRICE must be a decimal number above 0, not " + Quoted(price));
    }
    order.price = *read;
    order.quantity = words.NeedQuantity("QUANTITY");
    TakeAccountAndFunding(words, order);
    return Asked(order);
}

Act CancelCommand(Arguments& words)
{
    return Asked(CancelOrder{std::string(words.Need("CONTRACT"))});
}

template <Listed what>
Act ListCommand(Arguments& words)
{
    ListAccounts list{what, std::nullopt};
    if (words.Any()) {
        const std::string_view word = words.Take();
        list.account = FindAccount(word);
        if (!list.account) {
            throw BadText("ACCOUNT must be normal, margin or connect, not " + Quoted(word));
        }
    }
    return Asked(list);
}

Act QuoteCommand(Arguments& words)
{
    return Asked(ShowQuote{ParseCode(words.Need("CODE"))});
}

Act FillCommand(Arguments& words)
{
    FillOrder fill{std::string(words.Need("CONTRACT")), std::nullopt, 1};
    if (words.Any()) {
        fill.quantity = words.NeedQuantity("QUANTITY");
    }
    if (words.Any()) {
        const Quantity parts = words.NeedQuantity("PARTS");
        if (parts > *fill.quantity) {
            throw BadText("PARTS must not be more than QUANTITY");
        }
        fill.parts = static_cast<int>(std::min<Quantity>(parts, 1'000'000));
    }
    return Asked(fill);
}

Act PhaseCommand(Arguments& words)
{
    if (!words.Any()) {
        return Asked(ShowPhase{});
    }
    const std::string_view word = words.Take();
    std::string known;
    for (const Phase phase : kPhases) {
        if (word == PhaseWord(phase)) {
            return Asked(MoveToPhase{phase});
        }
        known += (known.empty() ? "" : ", ") + PhaseWord(phase);
    }
    throw BadText(Quoted(word) + " is no phase; they are " + known);
}

Act ClockCommand(Arguments& words)
{
    if (!words.Any()) {
        return Asked(ShowClock{});
    }
    const std::string_view word = words.Take();
    if (word.starts_with('+')) {
        const std::optional<double> by = ParseDecimal(word.substr(1));
        if (by && *by <= 24 * 3600) {
            return Asked(StepClock{milliseconds(std::llround(*by * 1000))});
        }
    } else if (const std::optional<milliseconds> ofDay = ParseTimeOfDay(word)) {
        return Asked(MoveClock{*ofDay});
    } else if (const std::optional<double> speed = ParseDecimal(word); speed && *speed <= kFastest) {
        return Asked(SetSpeed{*speed});
    }
    throw BadText("must be a speed (2), a step of up to a day (+90) or a time (14:56:30), not " +
                  Quoted(word));
}

Act ScenarioCommand(Arguments& words)
{
    RunScenario scenario;
    while (words.Any()) {
        scenario.words.emplace_back(words.Take());
    }
    const auto named = [&scenario](const Scenario& known) { return known.name == scenario.words.front(); };
    const std::span<const Scenario> all = Scenarios();
    if (!scenario.words.empty() && std::none_of(all.begin(), all.end(), named)) {
        throw BadText("unknown scenario " + Quoted(scenario.words.front()) + "; \"scenario\" lists them");
    }
    return Asked(scenario);
}

Act FaultCommand(Arguments& words)
{
    if (!words.Any()) {
        return Asked(SwitchFault{});
    }
    const std::string_view name = words.Take();
    return Asked(ParseFault(name, words.Take()));
}

// ---- the table

struct Command {
    CommandDescription description;
    Act (*parse)(Arguments& words) = nullptr;  // leaves what it doesn't know
};

constexpr Word kPanel[] = {Word::Panel};
constexpr Word kCode[] = {Word::Code};
constexpr Word kAccount[] = {Word::Account};
constexpr Word kPhase[] = {Word::Phase};
constexpr Word kOrder[] = {Word::Side, Word::Code, Word::Free, Word::Free, Word::Account};
constexpr Word kScenario[] = {Word::Scenario, Word::Code};
constexpr Word kFault[] = {Word::Fault, Word::OnOff};
constexpr Word kCommand[] = {Word::Command};

constexpr Command kCommands[] = {
    {{"open", "ID", "show the panel in a frame; make it if it isn't open", "open 41005", false, kPanel},
     &OpenCommand},
    {{"toggle", "ID", "the same, but an open panel is hidden or shown in turn", "", false, kPanel},
     &ToggleCommand},
    {{"show", "ID", "show an open panel; -1: all", "", false, kPanel}, &ShowCommand},
    {{"hide", "ID", "hide a panel; -1: all", "hide -1", false, kPanel}, &HideCommand},
    {{"notify", "ID CMD TEXT", "message CMD with TEXT to an open panel; -1: to all", "notify 41002 1 hello",
      false, kPanel},
     &NotifyCommand},
    {{"push", "ID TEXT", "push data; -1: to all panels", R"(push 41001 {"init_param":{"quotes":[]}})", false,
      kPanel},
     &PushCommand},
    {{"probe",
      "JSON",
      "a request to the UI probe, which answers by callback 205",
      R"(probe {"request":"tree"})",
      false,
      {}},
     &ProbeCommand},
    {{"destroyui", "", "close all panels", "", false, {}}, &DestroyUiCommand},
    {{"order", "buy|sell CODE PRICE QUANTITY [margin|connect] [borrowed|payback]",
      "an order, in shares or pieces", "order buy 600000 10.05 1000", true, kOrder},
     &OrderCommand},
    {{"cancel", "CONTRACT", "take back what is left of an order", "cancel 1001", true, {}}, &CancelCommand},
    {{"orders", "[ACCOUNT]", "today's orders; of the normal, margin or connect account, or of all", "", true,
      kAccount},
     &ListCommand<Listed::Orders>},
    {{"deals", "[ACCOUNT]", "today's deals", "", true, kAccount}, &ListCommand<Listed::Deals>},
    {{"holdings", "[ACCOUNT]", "what is held", "", true, kAccount}, &ListCommand<Listed::Holdings>},
    {{"funds", "[ACCOUNT]", "cash, frozen and free", "funds margin", true, kAccount},
     &ListCommand<Listed::Funds>},
    {{"quote", "CODE", "prices and book; CODE@MARKET where a code stands on two markets", "quote 000001@33",
      true, kCode},
     &QuoteCommand},
    {{"fill",
      "CONTRACT [QUANTITY [PARTS]]",
      "deal an open order at its own price, at once or in parts",
      "fill 1001 500 5",
      true,
      {}},
     &FillCommand},
    {{"phase", "[NAME]", "the market's phase; with a name: on to where that begins next",
      "phase closing-auction", true, kPhase},
     &PhaseCommand},
    {{"clock",
      "[SPEED | +SECONDS | HH:MM:SS]",
      "the market's clock; faster (0: stands), a step on, on to a time",
      "clock 14:56:30",
      true,
      {}},
     &ClockCommand},
    {{"scenario", "[NAME ...]", "let something happen; alone: what there is", "scenario limit-up 600000",
      true, kScenario},
     &ScenarioCommand},
    {{"fault", "[NAME [on|off|NUMBER]]", "let the service objects fail; alone: what there is",
      "fault late 500", true, kFault},
     &FaultCommand},
    {{"quit", "", "end the desk", "", false, {}}, &QuitCommand},
    {{"help", "[COMMAND]", "this list, or more about one", "", false, kCommand}, &HelpCommand},
};

constexpr auto kDescriptions = [] {
    std::array<CommandDescription, std::size(kCommands)> descriptions{};
    for (std::size_t i = 0; i < descriptions.size(); ++i) {
        descriptions[i] = kCommands[i].description;
    }
    return descriptions;
}();

std::string Form(const CommandDescription& command)
{
    return std::string(command.name) + (*command.arguments ? " " : "") + command.arguments;
}

constexpr std::size_t kHelpColumn = 32;

}  // namespace

std::span<const CommandDescription> Commands()
{
    return kDescriptions;
}

const CommandDescription* FindCommand(std::string_view name)
{
    const auto* const found =
        std::find_if(kDescriptions.begin(), kDescriptions.end(),
                     [name](const CommandDescription& command) { return command.name == name; });
    return found == kDescriptions.end() ? nullptr : &*found;
}

Act ParseCommand(std::string_view text)
{
    Arguments words(text);
    const std::string_view name = words.Take();
    for (const Command& command : kCommands) {
        if (command.description.name == name) {
            Act act = command.parse(words);
            if (words.Any()) {
                throw BadText(Quoted(words.Rest()) + " is too much");
            }
            return act;
        }
    }
    throw BadText("unknown command " + Quoted(name) + "; \"help\" lists them");
}

std::string CommandHelp(std::string_view name)
{
    if (const CommandDescription* const one = FindCommand(name)) {
        return Form(*one) + "\n  " + one->help + '\n' +
               (*one->example ? std::string("  example: ") + one->example + '\n' : "");
    }
    std::string list;
    for (const CommandDescription& command : kDescriptions) {
        std::string form = Form(command);
        form += form.size() < kHelpColumn ? std::string(kHelpColumn - form.size(), ' ')
                                          : '\n' + std::string(kHelpColumn, ' ');
        list += form + command.help + '\n';
    }
    return list + "{...}" + std::string(kHelpColumn - 5, ' ') +
           "a line as in a script; \"at\" counts from now\n";
}

std::optional<std::int32_t> ParseNumber(std::string_view text)
{
    return Whole<std::int32_t>(text);
}

std::optional<double> ParseDecimal(std::string_view text)
{
    const bool plain = text.find_first_not_of("0123456789.") == std::string_view::npos;
    return plain ? Whole<double>(text) : std::nullopt;
}

std::optional<milliseconds> ParseTimeOfDay(std::string_view text)
{
    const bool withSeconds = text.size() == 8;
    if ((text.size() != 5 && !withSeconds) || text[2] != ':' || (withSeconds && text[5] != ':')) {
        return std::nullopt;
    }
    const std::optional<unsigned> hour = Whole<unsigned>(text.substr(0, 2));
    const std::optional<unsigned> minute = Whole<unsigned>(text.substr(3, 2));
    const std::optional<unsigned> second = withSeconds ? Whole<unsigned>(text.substr(6)) : 0U;
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 59) {
        return std::nullopt;
    }
    return hours(*hour) + minutes(*minute) + seconds(*second);
}

SwitchFault ParseFault(std::string_view name, std::string_view value)
{
    if (!Faults::Find(name)) {
        std::string known;
        for (const FaultDescription& fault : Faults::All()) {
            known += (known.empty() ? "" : ", ") + std::string(fault.name);
        }
        throw BadText("unknown fault " + Quoted(name) + "; there are " + known);
    }
    SwitchFault fault{std::string(name), value != "off", std::nullopt};
    if (value.empty() || value == "on" || value == "off") {
        return fault;
    }
    fault.number = ParseNumber(value);
    if (!fault.number || *fault.number < 0) {
        throw BadText("must be on, off or a whole number, not " + Quoted(value));
    }
    return fault;
}

CodeName ParseCode(std::string_view text)
{
    const std::size_t at = text.find('@');
    CodeName name{std::string(text.substr(0, at)), std::nullopt};
    if (at != std::string_view::npos) {
        name.market = Whole<std::uint8_t>(text.substr(at + 1));
    }
    if (name.code.empty() || (at != std::string_view::npos && !name.market)) {
        throw BadText(Quoted(text) + " is no CODE or CODE@MARKET");
    }
    return name;
}

std::string PhaseWord(Phase phase)
{
    std::string word = PhaseName(phase);
    std::replace(word.begin(), word.end(), ' ', '-');
    return word;
}

}  // namespace panelry::desk
