#include "desk/script.h"

#include <array>
#include <istream>
#include <utility>

#include "base/number_text.h"
#include "desk/commands.h"
#include "desk/strict_json.h"
#include "hosting/message_ids.h"

namespace panelry::desk
{

namespace
{

constexpr std::int32_t kOperate = 0;
constexpr std::int32_t kPush = 1;
constexpr std::int64_t kLatestMs = 7LL * 24 * 60 * 60 * 1000;

std::optional<std::chrono::milliseconds> Time(const Json& object)
{
    const auto at = object.find("at");
    if (at == object.end()) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> ms = WholeNumber(*at, 0, kLatestMs);
    if (!ms) {
        throw BadText("\"at\" must be a whole number of milliseconds from 0 to " + std::to_string(kLatestMs));
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
        throw BadText("\"text\" must be a string, an object or an array");
    }
    if (text.find('\0') != std::string::npos) {
        throw BadText("\"text\" holds a NUL character, at which it would end");
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
        throw BadText(R"("type" must be "operate", "push" or a 32-bit number)");
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
        throw BadText("\"id\" must be a 32-bit number");
    }
    message.id = *id;
    message.text = Text(Member(object, "text"));
    return message;
}

Titles TitlesOf(const Json& value)
{
    if (!value.is_object()) {
        throw BadText("\"name\" must be an object of component ids and titles");
    }
    Titles titles;
    for (const auto& [key, title] : value.items()) {
        const std::optional<std::int32_t> id = ParseNumber(key);
        if (!id || !title.is_string()) {
            throw BadText("\"name\": " + Quoted(key) + " must be a component id with a title text");
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
            throw BadText("\"note\" must be a string");
        }
        return Note{value.get<std::string>()};
    }
    if (word == std::string_view("desk")) {
        if (!value.is_string()) {
            throw BadText("\"desk\" must be a string");
        }
        return ParseCommand(value.get<std::string>());
    }
    if (value != true) {
        throw BadText("\"quit\" must be true");
    }
    return Quit{};
}

Line LineOf(const Json& object)
{
    for (const char* const word : {"quit", "name", "note", "desk"}) {
        if (object.contains(word)) {
            Act act = DeskWord(object, word);
            return {Time(object), std::move(act)};
        }
    }
    Act act = MessageOf(object);
    return {Time(object), std::move(act)};
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
        throw BadText("\"cmd\" " + std::to_string(id) + ": what modules get under this id isn't a text");
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
    } catch (const BadText& reason) {
        return {std::nullopt, reason.what()};
    } catch (const Json::exception& error) {  // a number beyond all bounds, bytes that aren't UTF-8
        return {std::nullopt, Reason(error)};
    }
}

}  // namespace

ParsedLine ParseScriptLine(std::string_view text)
{
    return Parsed(text, [](std::string_view line) { return LineOf(ParseObject(line)); });
}

ParsedLine ParseTypedLine(std::string_view text)
{
    return Parsed(text, [](std::string_view line) {
        return line.front() == '{' ? LineOf(ParseObject(line)) : Line{std::nullopt, ParseCommand(line)};
    });
}

void SetOrigin(Act& act, const std::string& where)
{
    if (auto* const market = std::get_if<MarketAct>(&act)) {
        market->where = where;
    }
}

Script ReadScript(std::istream& input, std::string_view name)
{
    Script script;
    std::chrono::milliseconds at{0};
    std::string text;
    for (int number = 1; std::getline(input, text); ++number) {
        ParsedLine parsed = ParseScriptLine(text);
        const std::string where = std::string(name) + ':' + std::to_string(number);
        if (!parsed.error.empty()) {
            script.complaints.push_back({where, parsed.error});
        } else if (parsed.line) {
            SetOrigin(parsed.line->act, where);
            at = parsed.line->at.value_or(at);
            script.acts.push_back({at, std::move(parsed.line->act)});
        }
    }
    return script;
}

}  // namespace panelry::desk
