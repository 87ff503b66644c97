#include "watchlist/watchlist_manager_present.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

#include "hosting/message_ids.h"

using panelry::StockList;

namespace
{

constexpr std::size_t kLatestLimit = 200;
constexpr char kMarket[] = "market";
constexpr char kStockCode[] = "stockcode";
constexpr char kStockName[] = "stockname";

bool IsWritable(const StringMap& stock)
{
    try {
        panelry::ListText(stock);
        return true;
    } catch (const nlohmann::json::exception&) {
        return false;
    }
}

std::string TextOfThoseThatAreText(StockList stocks)
{
    std::erase_if(stocks, [](const StringMap& stock) { return !IsWritable(stock); });
    return panelry::ListText(stocks);
}

bool HasValue(const StringMap& map, const char* key, std::string_view value)
{
    const auto entry = map.find(key);
    return entry != map.end() && entry->second == value;
}

}  // namespace

WatchlistManagerPresent::WatchlistManagerPresent() : m_files(panelry::ListFiles::Here()) {}

WatchlistManagerPresent::~WatchlistManagerPresent()
{
    m_watchListeners.Clear();
    m_latestListeners.Clear();
    SaveLatest();
}

bool WatchlistManagerPresent::Load()
{
    m_files = panelry::ListFiles::Here();
    if (LoadWatchlist(m_files.user)) {
        LoadLatest();
        return true;
    }
    return LoadWatchlist(m_files.system);
}

bool WatchlistManagerPresent::LoadWatchlist(const std::string& path)
{
    std::optional<nlohmann::json> list = panelry::ReadList(path);
    if (!list) {
        return false;
    }
    const std::unique_lock guard(m_watchLock);
    m_watchlist.Assign(*std::move(list));
    return true;
}

void WatchlistManagerPresent::LoadLatest()
{
    const std::optional<nlohmann::json> list = panelry::ReadList(m_files.latest);
    if (!list) {
        return;
    }
    try {
        StockList stocks = list->get<StockList>();
        stocks.resize(std::min(stocks.size(), kLatestLimit));
        const std::unique_lock guard(m_latestLock);
        m_latestList = std::move(stocks);
    } catch (const nlohmann::json::exception&) {
        // skipped silently: the list fills anew
    }
}

void WatchlistManagerPresent::HandleRequest(WatchlistRequest& request)
{
    using namespace panelry;
    switch (request.cmd) {
        case kAddStocks:
            AddStocks(request.items);
            SaveAndTell(kWatchlistAdded);
            break;
        case kRemoveStocks:
            RemoveStocks(request.items);
            SaveAndTell(kWatchlistRemoved);
            break;
        case kMoveStock:
            MoveStock(request.from, request.to);
            SaveAndTell(kWatchlistMoved);
            break;
        case kTestStocks:
            TestStocks(request.items, request.found);
            break;
        case kListenWatchlist:
            if (request.listener) {
                const StockList list = WatchlistCopy();
                request.listener->OnWatchlistEvent(kWatchlistFirst, &list);
                m_watchListeners.Add(request.listener);
            }
            break;
        case kUnlistenWatchlist:
            m_watchListeners.Remove(request.listener);
            break;
        case kListenLatest:
            if (request.listener) {
                const StockList list = LatestCopy();
                request.listener->OnWatchlistEvent(kLatestFirst, &list);
                m_latestListeners.Add(request.listener);
            }
            break;
        case kUnlistenLatest:
            m_latestListeners.Remove(request.listener);
            break;
        default:
            break;
    }
}

void WatchlistManagerPresent::SaveAndTell(int code)
{
    Save();
    m_watchListeners.Notify(code, [this] { return WatchlistCopy(); });
}

void WatchlistManagerPresent::OnStockSelected(StringMap* payload)
{
    if (!payload || HasValue(*payload, panelry::kFromLatest, "1")) {
        return;
    }
    PutInFront((*payload)[kMarket], (*payload)[kStockCode], (*payload)[kStockName]);
    m_latestListeners.Notify(panelry::kLatestChanged, [this] { return LatestCopy(); });
}

void WatchlistManagerPresent::PutInFront(const std::string& market, const std::string& code,
                                         const std::string& name)
{
    const std::unique_lock guard(m_latestLock);
    const auto same = std::find_if(m_latestList.begin(), m_latestList.end(), [&](const StringMap& stock) {
        return HasValue(stock, kMarket, market) && HasValue(stock, kStockCode, code);
    });
    if (same != m_latestList.end()) {
        m_latestList.erase(same);
    }
    if (m_latestList.size() < kLatestLimit) {
        m_latestList.emplace_back();
    }
    // Into the front comes the empty entry or, in a full list, the oldest one.
    std::rotate(m_latestList.begin(), m_latestList.end() - 1, m_latestList.end());
    StringMap& first = m_latestList.front();
    first[kMarket] = market;
    first[kStockCode] = code;
    first[kStockName] = name;
}

void WatchlistManagerPresent::AddStocks(const std::vector<StringMap>& items)
{
    const std::unique_lock guard(m_watchLock);
    for (const StringMap& item : items) {
        m_watchlist.Add(item);
    }
}

void WatchlistManagerPresent::RemoveStocks(const std::vector<StringMap>& items)
{
    const std::unique_lock guard(m_watchLock);
    for (const StringMap& item : items) {
        m_watchlist.Remove(item);
    }
}

void WatchlistManagerPresent::MoveStock(int from, int to)
{
    const std::unique_lock guard(m_watchLock);
    m_watchlist.Move(from, to);
}

void WatchlistManagerPresent::TestStocks(const std::vector<StringMap>& items, std::vector<bool>& found) const
{
    const std::shared_lock guard(m_watchLock);
    const std::size_t count = std::min(items.size(), found.size());
    for (std::size_t i = 0; i < count; ++i) {
        found[i] = m_watchlist.Contains(items[i]);
    }
}

void WatchlistManagerPresent::Save()
{
    const std::unique_lock guard(m_watchLock);  // over the writing too: the newer list is written later
    try {
        panelry::ReplaceFile(m_files.user, m_watchlist.Text());
    } catch (...) {
        // skipped silently: the list in memory stands
    }
}

void WatchlistManagerPresent::SaveLatest() const
{
    try {
        panelry::ReplaceFile(m_files.latest, TextOfThoseThatAreText(LatestCopy()));
    } catch (...) {
        // skipped silently: the old file stands
    }
}

StockList WatchlistManagerPresent::WatchlistCopy() const
{
    const std::shared_lock guard(m_watchLock);
    return m_watchlist.Stocks();
}

StockList WatchlistManagerPresent::LatestCopy() const
{
    const std::shared_lock guard(m_latestLock);
    return m_latestList;
}
