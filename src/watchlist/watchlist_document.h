#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "watchlist/watchlist_listener.h"

namespace panelry
{

/// The user's watchlist in the form of its file: a JSON array of objects, order is the user's. Beside it one
/// hash a stock, so that a search reads a row of numbers and looks into the array only where one of them
/// fits.
///
/// Two stocks are one when "stockcode" and "market" are equal JSON strings. In an item a key that is absent
/// reads as empty; an element that lacks one, or holds no string there, equals nothing.
///
/// Threading: none of its own.
/// Failures: a file may hold any JSON. An element that is no object stops each search that comes to it, and a
///   document that is no array each addition and Stocks(), with the type error of the JSON library.
class WatchlistDocument
{
public:
    using Json = nlohmann::json;

    /// An empty list.
    WatchlistDocument() : m_list(Json::array()) {}

    void Assign(Json list);

    /// Appends `item` with all its keys, unless it is there.
    void Add(const StringMap& item);
    /// Takes the first element that equals `item` out, if there is one.
    void Remove(const StringMap& item);
    /// Takes the element at `from` to `to`, the ones between give way. Other indices change nothing.
    void Move(int from, int to);
    bool Contains(const StringMap& item) const;

    StockList Stocks() const;
    /// The file's text. Throws the type error for text that isn't UTF-8.
    std::string Text() const;

private:
    using Place = std::size_t;
    static constexpr Place kNowhere = static_cast<Place>(-1);

    Place Find(const StringMap& item) const;
    const Json& At(Place place) const;
    void FindFirstBroken();

    Json m_list;
    std::vector<std::size_t> m_hashes;  // one for each element, in the list's order
    Place m_firstBroken = kNowhere;     // the first element that is no object
};

/// The text of a list's file: indented by four blanks, UTF-8 as it is.
std::string ListText(const nlohmann::json& list);

}  // namespace panelry
