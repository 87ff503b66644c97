#include "watchlist/watchlist_document.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace panelry
{

namespace
{

using Json = nlohmann::json;

constexpr char kStockCode[] = "stockcode";
constexpr char kMarket[] = "market";
constexpr int kIndent = 4;

// Null for an absent key and for anything but a string.
const std::string* TextOf(const Json& element, const char* key)
{
    const auto value = element.find(key);
    return value == element.end() ? nullptr : value->get_ptr<const std::string*>();
}

std::size_t HashOf(const std::string& code, const std::string& market)
{
    const std::hash<std::string> hash;
    return hash(code) * 31 + hash(market);
}

std::size_t HashOf(const StringMap& item)
{
    return HashOf(FieldOf(item, kStockCode), FieldOf(item, kMarket));
}

// Elements that equal nothing get any number: the search looks at the element itself before it believes.
std::size_t HashOf(const Json& element)
{
    const std::string* const code = element.is_object() ? TextOf(element, kStockCode) : nullptr;
    const std::string* const market = element.is_object() ? TextOf(element, kMarket) : nullptr;
    return code && market ? HashOf(*code, *market) : 0;
}

bool IsStock(const Json& element, const StringMap& item)
{
    const std::string* const code = TextOf(element, kStockCode);
    const std::string* const market = TextOf(element, kMarket);
    return code && market && *code == FieldOf(item, kStockCode) && *market == FieldOf(item, kMarket);
}

template <class List>
void Rotate(List& list, std::size_t from, std::size_t to)
{
    const auto at = [&list](std::size_t place) { return list.begin() + static_cast<std::ptrdiff_t>(place); };
    if (from < to) {
        std::rotate(at(from), at(from + 1), at(to + 1));
    } else {
        std::rotate(at(to), at(from), at(from + 1));
    }
}

}  // namespace

void WatchlistDocument::Assign(Json list)
{
    m_list = std::move(list);
    m_hashes.clear();
    m_hashes.reserve(m_list.size());
    for (const Json& element : m_list) {
        m_hashes.push_back(HashOf(element));
    }
    FindFirstBroken();
}

void WatchlistDocument::Add(const StringMap& item)
{
    if (Contains(item)) {
        return;
    }
    Json element(item);
    m_hashes.push_back(HashOf(item));
    try {
        m_list.push_back(std::move(element));
    } catch (...) {
        m_hashes.pop_back();
        throw;
    }
}

void WatchlistDocument::Remove(const StringMap& item)
{
    const Place place = Find(item);
    if (place == kNowhere) {
        return;
    }
    m_list.erase(std::next(m_list.begin(), static_cast<std::ptrdiff_t>(place)));
    m_hashes.erase(m_hashes.begin() + static_cast<std::ptrdiff_t>(place));
    FindFirstBroken();
}

void WatchlistDocument::Move(int from, int to)
{
    const auto inside = [this](int index) {
        return index >= 0 && static_cast<std::size_t>(index) < m_list.size();
    };
    if (!m_list.is_array() || !inside(from) || !inside(to)) {
        return;
    }
    Rotate(m_list.get_ref<Json::array_t&>(), static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    Rotate(m_hashes, static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    FindFirstBroken();
}

bool WatchlistDocument::Contains(const StringMap& item) const
{
    return Find(item) != kNowhere;
}

StockList WatchlistDocument::Stocks() const
{
    return m_list.get<StockList>();
}

std::string WatchlistDocument::Text() const
{
    return ListText(m_list);
}

WatchlistDocument::Place WatchlistDocument::Find(const StringMap& item) const
{
    const std::size_t hash = HashOf(item);
    const auto begin = m_hashes.begin();
    const auto end =
        m_firstBroken == kNowhere ? m_hashes.end() : begin + static_cast<std::ptrdiff_t>(m_firstBroken);
    for (auto found = std::find(begin, end, hash); found != end; found = std::find(found + 1, end, hash)) {
        const auto place = static_cast<Place>(found - begin);
        if (IsStock(At(place), item)) {
            return place;
        }
    }
    if (m_firstBroken != kNowhere) {
        static_cast<void>(At(m_firstBroken)[kStockCode]);  // throws: see class comment
    }
    return kNowhere;
}

const Json& WatchlistDocument::At(Place place) const
{
    // A document that is no array can be walked all the same: an object over its values.
    return m_list.is_array() ? m_list[place] : *std::next(m_list.begin(), static_cast<std::ptrdiff_t>(place));
}

void WatchlistDocument::FindFirstBroken()
{
    const auto broken =
        std::find_if(m_list.begin(), m_list.end(), [](const Json& element) { return !element.is_object(); });
    m_firstBroken =
        broken == m_list.end() ? kNowhere : static_cast<Place>(std::distance(m_list.begin(), broken));
}

std::string ListText(const nlohmann::json& list)
{
    return list.dump(kIndent);
}

}  // namespace panelry
