#include "desk/workspace.h"

#include <array>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <stdexcept>

#include "desk/commands.h"
#include "desk/strict_json.h"

namespace fs = std::filesystem;

namespace panelry::desk
{

namespace
{

using std::chrono::milliseconds;

constexpr std::int64_t kWholeScreen = 100;

/// Puts `where` before the reason of what `read` refuses.
template <class Read>
auto Within(const std::string& where, Read&& read)
{
    try {
        return read();
    } catch (const BadText& reason) {
        throw BadText(where + ": " + reason.what());
    }
}

const Json& Object(const Json& value)
{
    if (!value.is_object()) {
        throw BadText("must be an object");
    }
    return value;
}

/// Calls `read` with the value of `key`, if there is one.
template <class Read>
void IfThere(const Json& object, const char* key, Read&& read)
{
    const auto member = object.find(key);
    if (member != object.end()) {
        Within(Quoted(key), [&] { read(*member); });
    }
}

std::string Text(const Json& value)
{
    if (!value.is_string() || value.get_ref<const std::string&>().find('\0') != std::string::npos) {
        throw BadText("must be a text");
    }
    return value.get<std::string>();
}

double Decimal(const Json& value, double most)
{
    if (!value.is_number() || value.get<double>() < 0 || value.get<double>() > most) {
        throw BadText("must be a number from 0 to " + std::to_string(static_cast<std::int64_t>(most)));
    }
    return value.get<double>();
}

std::int64_t Whole(const Json& value, std::int64_t least, std::int64_t most)
{
    const std::optional<std::int64_t> number = WholeNumber(value, least, most);
    if (!number) {
        throw BadText("must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

bool Flag(const Json& value)
{
    if (!value.is_boolean()) {
        throw BadText("must be true or false");
    }
    return value.get<bool>();
}

std::int32_t PanelId(const Json& object, const char* key)
{
    const std::optional<std::int32_t> id = Number32(Member(object, key));
    if (!id || *id < 0) {
        throw BadText(Quoted(key) + " must be the id of a panel");
    }
    return *id;
}

/// x, y, width, height in hundredths of the screen.
const Json& PlaceOf(const Json& value)
{
    constexpr const char* kShape =
        "must be a list of four: x, y, width and height in hundredths of the screen";
    if (!value.is_array() || value.size() != 4) {
        throw BadText(kShape);
    }
    for (const std::size_t first : {0U, 1U}) {
        const std::optional<std::int64_t> begin = WholeNumber(value[first], 0, kWholeScreen);
        const std::optional<std::int64_t> size = WholeNumber(value[first + 2], 1, kWholeScreen);
        if (!begin || !size || *begin + *size > kWholeScreen) {
            throw BadText(kShape);
        }
    }
    return value;
}

/// The place goes to the panel with what else it gets.
std::string Placed(const std::string& init, const Json& place)
{
    Json all = init.empty() ? Json::object() : Json::parse(init);
    if (!all.is_object()) {
        throw BadText("needs an object in \"init\"");
    }
    all["place"] = place;
    return all.dump();
}

Workspace::Panel PanelOf(const Json& entry)
{
    constexpr std::array<std::string_view, 5> kKeys{"id", "title", "open", "place", "init"};
    RefuseOtherKeys(Object(entry), kKeys);
    Workspace::Panel panel;
    panel.id = PanelId(entry, "id");
    IfThere(entry, "title", [&](const Json& value) { panel.title = Text(value); });
    IfThere(entry, "open", [&](const Json& value) { panel.open = Flag(value); });
    IfThere(entry, "init", [&](const Json& value) { panel.init = value.dump(); });
    IfThere(entry, "place", [&](const Json& value) { panel.init = Placed(panel.init, PlaceOf(value)); });
    return panel;
}

MarketWish MarketOf(const Json& object, const fs::path& directory)
{
    constexpr std::array<std::string_view, 6> kKeys{"securities", "accounts", "speed",
                                                    "start",      "rate",     "seed"};
    RefuseOtherKeys(Object(object), kKeys);
    MarketWish market;
    IfThere(object, "securities", [&](const Json& value) { market.securities = directory / Text(value); });
    IfThere(object, "accounts", [&](const Json& value) { market.accounts = directory / Text(value); });
    IfThere(object, "speed", [&](const Json& value) { market.speed = Decimal(value, kFastest); });
    IfThere(object, "rate", [&](const Json& value) { market.rate = Decimal(value, kHighestRate); });
    IfThere(object, "seed", [&](const Json& value) {
        market.seed = static_cast<std::uint64_t>(Whole(value, 0, std::numeric_limits<std::int64_t>::max()));
    });
    IfThere(object, "start", [&](const Json& value) {
        market.start = ParseTimeOfDay(Text(value));
        if (!market.start) {
            throw BadText("must be a time of day as \"09:29:30\"");
        }
    });
    return market;
}

Feed FeedOf(const Json& entry)
{
    constexpr std::array<std::string_view, 3> kKeys{"panel", "codes", "every"};
    RefuseOtherKeys(Object(entry), kKeys);
    Feed feed;
    feed.panel = PanelId(entry, "panel");
    const Json& codes = Member(entry, "codes");
    if (!codes.is_array() || codes.empty()) {
        throw BadText("\"codes\" must be a list of codes");
    }
    for (const Json& code : codes) {
        feed.codes.push_back(Within("\"codes\"", [&] { return ParseCode(Text(code)); }));
    }
    IfThere(entry, "every",
            [&](const Json& value) { feed.every = milliseconds(Whole(value, 50, 3'600'000)); });
    return feed;
}

/// Reads a list with `read`; a reason names the entry, counted from 1.
template <class Read>
void ForEach(const Json& object, const char* key, Read&& read)
{
    const auto list = object.find(key);
    if (list == object.end()) {
        return;
    }
    if (!list->is_array()) {
        throw BadText(Quoted(key) + " must be a list");
    }
    for (std::size_t i = 0; i < list->size(); ++i) {
        Within(Quoted(key) + ", entry " + std::to_string(i + 1), [&] { read((*list)[i]); });
    }
}

Workspace WorkspaceOf(const Json& object, const fs::path& directory)
{
    constexpr std::array<std::string_view, 6> kKeys{"title", "panels", "script", "market", "state", "feeds"};
    RefuseOtherKeys(object, kKeys);
    Workspace workspace;
    std::set<std::int32_t> ids;
    IfThere(object, "title", [&](const Json& value) { workspace.title = Text(value); });
    ForEach(object, "panels", [&](const Json& entry) {
        workspace.panels.push_back(PanelOf(entry));
        if (!ids.insert(workspace.panels.back().id).second) {
            throw BadText("the panel " + std::to_string(workspace.panels.back().id) + " stands there twice");
        }
    });
    IfThere(object, "script", [&](const Json& value) { workspace.script = directory / Text(value); });
    IfThere(object, "market", [&](const Json& value) { workspace.market = MarketOf(value, directory); });
    IfThere(object, "state", [&](const Json& value) { workspace.market.state = directory / Text(value); });
    ForEach(object, "feeds", [&](const Json& entry) { workspace.feeds.push_back(FeedOf(entry)); });
    return workspace;
}

template <class Value>
void TakeUnset(std::optional<Value>& value, const std::optional<Value>& weaker)
{
    if (!value) {
        value = weaker;
    }
}

}  // namespace

MarketWish Merged(const MarketWish& stronger, const MarketWish& weaker)
{
    MarketWish wish = stronger;
    TakeUnset(wish.securities, weaker.securities);
    TakeUnset(wish.accounts, weaker.accounts);
    TakeUnset(wish.state, weaker.state);
    TakeUnset(wish.speed, weaker.speed);
    TakeUnset(wish.start, weaker.start);
    TakeUnset(wish.rate, weaker.rate);
    TakeUnset(wish.seed, weaker.seed);
    return wish;
}

Titles Workspace::PanelTitles() const
{
    Titles titles;
    for (const Panel& panel : panels) {
        if (!panel.title.empty()) {
            titles[panel.id] = panel.title;
        }
    }
    return titles;
}

std::vector<Message> Workspace::Openings() const
{
    std::vector<Message> messages;
    for (const Panel& panel : panels) {
        if (panel.open) {
            Json keys{{"operate", "clicked"},
                      {"need_wrapper", "1"},
                      {"need_display", "1"},
                      {"always_display", "1"}};
            if (!panel.init.empty()) {
                keys["init_param"] = Json::parse(panel.init);
            }
            messages.push_back({0, panel.id, keys.dump()});
        }
    }
    return messages;
}

Workspace ReadWorkspace(const fs::path& file)
{
    std::ifstream input(file, std::ios::binary);
    if (!input || fs::is_directory(file)) {
        throw std::runtime_error("can't read the workspace " + file.string());
    }
    const std::string text{std::istreambuf_iterator<char>(input), {}};
    try {
        return WorkspaceOf(ParseObject(text), fs::absolute(file).parent_path());
    } catch (const BadText& reason) {
        throw std::runtime_error(file.string() + ": " + reason.what());
    } catch (const Json::exception& error) {
        throw std::runtime_error(file.string() + ": " + Reason(error));
    }
}

}  // namespace panelry::desk
