#include "desk/script.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <istream>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <utility>

#include "base/number_text.h"
#include "hosting/message_ids.h"

namespace panelry::desk
{

namespace
{

using Json = nlohmann::ordered_json;  // a text that is written as JSON keeps its order of keys

constexpr std::int32_t kOperate = 0;
constexpr std::int32_t kPush = 1;
constexpr int kDeepest = 512;  // beyond, reading recurses too far; the library draws the same line
constexpr std::int64_t kLatestMs = 7LL * 24 * 60 * 60 * 1000;

/// Leaves the parsing of one line; what() is the reason.
class BadLine : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

std::string Quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// What follows the first `mark`, or the whole text where there is none.
std::string Behind(std::string_view mark, const std::string& text)
{
    const std::size_t at = text.find(mark);
    return at == std::string::npos ? text : text.substr(at + mark.size());
}

/// "[json.exception.parse_error.101] parse error at line 1, column 5: reason" without its head: a script line
/// is always the parser's line 1.
std::string Reason(const Json::parse_error& error)
{
    return "not JSON at byte " + std::to_string(error.byte) + ": " + Behind(": ", error.what());
}

Json ParseObject(std::string_view text)
{
    const auto bounded = [](int depth, Json::parse_event_t, const Json&) {
        if (depth > kDeepest) {
            throw BadLine("nested more than " + std::to_string(kDeepest) + " deep");
        }
        return true;
    };
    try {
        Json object = Json::parse(text, bounded);
        if (!object.is_object()) {
            throw BadLine("not a JSON object");
        }
        return object;
    } catch (const Json::parse_error& error) {
        throw BadLine(Reason(error));
    }
}

void RefuseOtherKeys(const Json& object, std::span<const std::string_view> known)
{
    for (const auto& [key, value] : object.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            throw BadLine("unknown key " + Quoted(key));
        }
    }
}

const Json& Member(const Json& object, const char* key)
{
    const auto member = object.find(key);
    if (member == object.end()) {
        throw BadLine(Quoted(key) + " is missing");
    }
    return *member;
}

std::optional<std::int64_t> WholeNumber(const Json& value, std::int64_t least, std::int64_t most)
{
    if (!value.is_number_integer() ||
        (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(most))) {
        return std::nullopt;
    }
    const auto number = value.get<std::int64_t>();
    return number < least || number > most ? std::nullopt : std::optional(number);
}

std::optional<std::int32_t> Number32(const Json& value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const std::optional<std::int64_t> number = WholeNumber(value, Limits::min(), Limits::max());
    return number ? std::optional(static_cast<std::int32_t>(*number)) : std::nullopt;
}

std::optional<std::chrono::milliseconds> Time(const Json& object)
{
    const auto at = object.find("at");
    if (at == object.end()) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> ms = WholeNumber(*at, 0, kLatestMs);
    if (!ms) {
        throw BadLine("\"at\" must be a whole number of milliseconds from 0 to " + std::to_string(kLatestMs));
    }
    return std::chrono::milliseconds(*ms);
}

std::string Text(const Json& value)
{
    std::string text;
    if (value.is_string()) {
        text = value.get<std::string>();
    } else if (value.is_structured()) {
        text = value.dump();
    } else {
        throw BadLine("\"text\" must be a string, an object or an array");
    }
    if (text.find('\0') != std::string::npos) {
        throw BadLine("\"text\" holds a NUL character, at which it would end");
    }
    return text;
}

std::int32_t Type(const Json& value)
{
    if (value == "operate") {
        return kOperate;
    }
    if (value == "push") {
        return kPush;
    }
    const std::optional<std::int32_t> type = Number32(value);
    if (!type) {
        throw BadLine(R"("type" must be "operate", "push" or a 32-bit number)");
    }
    return *type;
}

Message MessageOf(const Json& object)
{
    constexpr std::array<std::string_view, 4> kKeys{"at", "type", "id", "text"};
    RefuseOtherKeys(object, kKeys);
    Message message;
    message.type = Type(Member(object, "type"));
    const std::optional<std::int32_t> id = Number32(Member(object, "id"));
    if (!id) {
        throw BadLine("\"id\" must be a 32-bit number");
    }
    message.id = *id;
    message.text = Text(Member(object, "text"));
    return message;
}

Titles TitlesOf(const Json& value)
{
    if (!value.is_object()) {
        throw BadLine("\"name\" must be an object of component ids and titles");
    }
    Titles titles;
    for (const auto& [key, title] : value.items()) {
        const std::optional<std::int32_t> id = ParseNumber(key);
        if (!id || !title.is_string()) {
            throw BadLine("\"name\": " + Quoted(key) + " must be a component id with a title text");
        }
        titles[*id] = title.get<std::string>();
    }
    return titles;
}

Act DeskWord(const Json& object, const char* word)
{
    const std::array<std::string_view, 2> keys{"at", word};
    RefuseOtherKeys(object, keys);
    const Json& value = object[word];
    if (word == std::string_view("name")) {
        return TitlesOf(value);
    }
    if (word == std::string_view("note")) {
        if (!value.is_string()) {
            throw BadLine("\"note\" must be a string");
        }
        return Note{value.get<std::string>()};
    }
    if (value != true) {
        throw BadLine("\"quit\" must be true");
    }
    return Quit{};
}

Line LineOf(const Json& object)
{
    for (const char* const word : {"quit", "name", "note"}) {
        if (object.contains(word)) {
            Act act = DeskWord(object, word);
            return {Time(object), std::move(act)};
        }
    }
    Act act = MessageOf(object);
    return {Time(object), std::move(act)};
}

// ---- short commands

/// Cuts the next word off `rest`.
std::string_view TakeWord(std::string_view& rest)
{
    rest = Trimmed(rest);
    const std::string_view word = rest.substr(0, rest.find_first_of(" \t"));
    rest = Trimmed(rest.substr(word.size()));
    return word;
}

std::int32_t TakeNumber(std::string_view& rest, const char* what)
{
    const std::string_view word = TakeWord(rest);
    const std::optional<std::int32_t> number = ParseNumber(word);
    if (!number) {
        throw BadLine(word.empty() ? std::string(what) + " is missing"
                                   : std::string(what) + " must be a 32-bit number, not " + Quoted(word));
    }
    return *number;
}

Message Operate(std::int32_t id, const Json& keys)
{
    return {kOperate, id, keys.dump()};
}

Act OpenCommand(std::string_view& rest)
{
    return Operate(
        TakeNumber(rest, "ID"),
        {{"operate", "clicked"}, {"need_wrapper", "1"}, {"need_display", "1"}, {"always_display", "1"}});
}

Act ToggleCommand(std::string_view& rest)
{
    return Operate(TakeNumber(rest, "ID"),
                   {{"operate", "clicked"}, {"need_wrapper", "1"}, {"need_display", "1"}});
}

Act ShowCommand(std::string_view& rest)
{
    return Operate(TakeNumber(rest, "ID"), {{"operate", "show"}});
}

Act HideCommand(std::string_view& rest)
{
    return Operate(TakeNumber(rest, "ID"), {{"operate", "hide"}});
}

Act NotifyCommand(std::string_view& rest)
{
    const std::int32_t id = TakeNumber(rest, "ID");
    const std::int32_t command = TakeNumber(rest, "CMD");
    const std::string text(std::exchange(rest, {}));
    // A panel that isn't open stays so: made by "notify" it would stand without a frame, and hidden.
    return Operate(id, {{"operate", "notify"},
                        {"cmd", std::to_string(command)},
                        {"bussiness", text},
                        {"need_create_new", "0"}});
}

Act PushCommand(std::string_view& rest)
{
    const std::int32_t id = TakeNumber(rest, "ID");
    if (rest.empty()) {
        throw BadLine("TEXT is missing");
    }
    return Message{kPush, id, std::string(std::exchange(rest, {}))};
}

Act DestroyUiCommand(std::string_view& /*rest*/)
{
    return Message{kOperate, -1, "destroyui"};
}

Act QuitCommand(std::string_view& /*rest*/)
{
    return Quit{};
}

Act HelpCommand(std::string_view& /*rest*/)
{
    return Help{};
}

struct Command {
    std::string_view name;
    Act (*parse)(std::string_view& rest);  // leaves in `rest` what it doesn't know
};

constexpr Command kCommands[] = {
    {"open", &OpenCommand}, {"toggle", &ToggleCommand}, {"show", &ShowCommand},
    {"hide", &HideCommand}, {"notify", &NotifyCommand}, {"push", &PushCommand},
    {"quit", &QuitCommand}, {"help", &HelpCommand},     {"destroyui", &DestroyUiCommand},
};

Line ParseCommand(std::string_view text)
{
    const std::string_view name = TakeWord(text);
    for (const Command& command : kCommands) {
        if (command.name == name) {
            Act act = command.parse(text);
            if (!text.empty()) {
                throw BadLine(Quoted(text) + " is too much");
            }
            return {std::nullopt, std::move(act)};
        }
    }
    throw BadLine("unknown command " + Quoted(name) + "; \"help\" lists them");
}

// As the library reads it. What it passes over, because it isn't JSON or is too deep, is no object here.
Json AsRead(const std::string& text)
{
    bool deep = false;
    const auto bounded = [&deep](int depth, Json::parse_event_t, const Json&) {
        deep = deep || depth > kDeepest;
        return !deep;
    };
    Json keys = Json::parse(text, bounded, false);
    return deep ? Json() : keys;
}

// A module gets the text of an operate message under the id in its "cmd". Under some ids it takes whatever
// comes for something else, and the text would crash the panels and the desk with them.
void RefuseForeignPayload(const Message& message)
{
    const Json keys = message.type == kOperate ? AsRead(message.text) : Json();
    const auto command = keys.is_object() ? keys.find("cmd") : keys.end();
    if (command == keys.end() || !command->is_string()) {
        return;
    }
    const int id = TextToInt(command->get_ref<const std::string&>());
    if (!CarriesText(id)) {
        throw BadLine("\"cmd\" " + std::to_string(id) + ": what modules get under this id isn't a text");
    }
}

template <class Parse>
ParsedLine Parsed(std::string_view text, Parse parse)
{
    text = Trimmed(text);
    if (text.empty() || text.front() == '#') {
        return {};
    }
    try {
        Line line = parse(text);
        if (const auto* const message = std::get_if<Message>(&line.act)) {
            RefuseForeignPayload(*message);
        }
        return {std::move(line), {}};
    } catch (const BadLine& reason) {
        return {std::nullopt, reason.what()};
    } catch (const Json::exception& error) {  // a number beyond all bounds, bytes that aren't UTF-8
        return {std::nullopt, Behind("] ", error.what())};
    }
}

}  // namespace

const char kTypedHelp[] =
    "open ID              show the panel in a frame; make it if it isn't open\n"
    "toggle ID            the same, but an open panel is hidden or shown in turn\n"
    "show ID, hide ID     -1: all panels\n"
    "notify ID CMD TEXT   message CMD with TEXT to an open panel; -1: to all\n"
    "push ID TEXT         push data; -1: to all panels\n"
    "destroyui            close all panels\n"
    "quit                 end the desk\n"
    "help                 this list\n"
    "{...}                a line as in a script; \"at\" counts from now\n";

ParsedLine ParseScriptLine(std::string_view text)
{
    return Parsed(text, [](std::string_view line) { return LineOf(ParseObject(line)); });
}

ParsedLine ParseTypedLine(std::string_view text)
{
    return Parsed(text, [](std::string_view line) {
        return line.front() == '{' ? LineOf(ParseObject(line)) : ParseCommand(line);
    });
}

Script ReadScript(std::istream& input, std::string_view name)
{
    Script script;
    std::chrono::milliseconds at{0};
    std::string text;
    for (int number = 1; std::getline(input, text); ++number) {
        ParsedLine parsed = ParseScriptLine(text);
        if (!parsed.error.empty()) {
            script.complaints.push_back(std::string(name) + ':' + std::to_string(number) + ": " +
                                        parsed.error);
        } else if (parsed.line) {
            at = parsed.line->at.value_or(at);
            script.acts.push_back({at, std::move(parsed.line->act)});
        }
    }
    return script;
}

std::optional<std::int32_t> ParseNumber(std::string_view text)
{
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty() ? std::optional(number) : std::nullopt;
}

}  // namespace panelry::desk
