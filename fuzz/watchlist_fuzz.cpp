// Watchlist files of any content, and requests on them, against a plain model: one document that is searched
// from the front.
//
// An input is the user's file up to the first NUL, the file of the latest stocks up to the second, and steps
// of four bytes: what to do, the code and the market of the stock, a number.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "check.h"
#include "watchlist/watchlist_manager_present.h"

namespace
{

using Json = nlohmann::json;
using panelry::StockList;

constexpr char kUserFile[] = "userconfig/Watchlist.json";
constexpr char kLatestFile[] = "userconfig/Lastestlist.json";
constexpr std::size_t kLatestLimit = 200;

std::string TextOf(const char* path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// What an operation throws, in words; empty if nothing.
template <class Operation>
std::string Thrown(Operation operation)
{
    try {
        operation();
        return {};
    } catch (const Json::exception& exception) {
        return exception.what();
    }
}

// A list as the service should keep it, without any cleverness.
class Model
{
public:
    explicit Model(Json list) : m_list(std::move(list)) {}

    /// The answer to a test; false for the rest.
    bool Do(const WatchlistRequest& request)
    {
        const StringMap& item = request.items[0];
        if (request.cmd == panelry::kMoveStock) {
            Move(request.from, request.to);
        } else if (request.cmd == panelry::kAddStocks && Find(item) == m_list.end()) {
            m_list.push_back(Json(item));
        } else if (request.cmd == panelry::kRemoveStocks) {
            if (const auto found = Find(item); found != m_list.end()) {
                m_list.erase(found);
            }
        }
        return request.cmd == panelry::kTestStocks && Find(item) != m_list.end();
    }
    StockList Stocks() const { return m_list.get<StockList>(); }
    std::string Text() const { return m_list.dump(4); }

private:
    void Move(int from, int to)
    {
        const int size = static_cast<int>(m_list.size());
        if (m_list.is_array() && from >= 0 && to >= 0 && from < size && to < size) {
            Json moved = m_list.at(static_cast<std::size_t>(from));
            m_list.erase(m_list.begin() + from);
            m_list.insert(m_list.begin() + to, std::move(moved));
        }
    }

    Json::iterator Find(const StringMap& item)
    {
        return std::find_if(m_list.begin(), m_list.end(), [&item](const Json& stock) {
            if (!stock.is_object()) {
                static_cast<void>(stock["stockcode"]);  // throws
            }
            return stock.contains("stockcode") && stock.contains("market") &&
                   stock["stockcode"] == item.at("stockcode") && stock["market"] == item.at("market");
        });
    }

    Json m_list;
};

class Listener : public WatchlistListener
{
public:
    void OnWatchlistEvent(int, const void* list) override { m_list = *static_cast<const StockList*>(list); }
    StockList m_list;
};

// The service and the model, side by side.
class Comparison
{
public:
    Comparison(const std::string& userText, const std::string& latestText)
    {
        std::ofstream(kUserFile, std::ios::binary) << userText;
        std::ofstream(kLatestFile, std::ios::binary) << latestText;
        m_present = std::make_unique<WatchlistManagerPresent>();
        m_loaded = m_present->Load();
        m_model = std::make_unique<Model>(m_loaded ? Document(userText) : Json::array());
        m_fileText = userText;
    }

    void Step(int act, const StringMap& stock, int number)
    {
        if (act % 8 == 5) {
            Select(stock);
            return;
        }
        WatchlistRequest request;
        request.cmd = act % 8;
        request.items = {stock};
        request.found = {false};
        request.from = number % 16 - 1;
        request.to = number / 16 - 1;
        bool found = false;
        const std::string expected = Thrown([&] { found = m_model->Do(request); });
        Check(Thrown([&] { m_present->HandleRequest(request); }) == expected, "another exception");
        Check(request.found[0] == found, "another answer");
        if (request.cmd <= panelry::kMoveStock && expected.empty()) {  // it saves
            Thrown([&] { m_fileText = m_model->Text(); });
        }
        Check(TextOf(kUserFile) == m_fileText, "another file");
        CompareLists();
    }

    void End()
    {
        const std::size_t latest = Listed(panelry::kListenLatest).size();
        Check(latest <= kLatestLimit, "too many latest stocks");
        m_present.reset();
        const Json written = Json::parse(TextOf(kLatestFile));
        Check(written.is_array() && written.size() <= latest, "another number of latest stocks");
    }

private:
    static Json Document(const std::string& text)
    {
        std::istringstream stream(text);
        Json document;
        stream >> document;
        return document;
    }

    void CompareLists()
    {
        StockList list;
        StockList expected;
        const std::string modelThrows = Thrown([&] { expected = m_model->Stocks(); });
        Check(Thrown([&] { list = Listed(panelry::kListenWatchlist); }) == modelThrows, "another exception");
        Check(list == expected, "another list");
    }

    void Select(StringMap stock)
    {
        m_present->OnStockSelected(&stock);
        const StockList latest = Listed(panelry::kListenLatest);
        Check(!latest.empty() && latest.front().at("stockcode") == stock.at("stockcode"), "not in front");
        Check(stock.contains("stockname"), "a key is missing");
    }

    // What a new listener gets, which is then gone again.
    StockList Listed(int listen)
    {
        Listener listener;
        WatchlistRequest request;
        request.listener = &listener;
        request.cmd = listen;
        m_present->HandleRequest(request);
        const bool latest = listen == panelry::kListenLatest;
        request.cmd = latest ? panelry::kUnlistenLatest : panelry::kUnlistenWatchlist;
        m_present->HandleRequest(request);
        return listener.m_list;
    }

    std::unique_ptr<WatchlistManagerPresent> m_present;
    std::unique_ptr<Model> m_model;
    std::string m_fileText;
    bool m_loaded = false;
};

std::string CutAtNul(std::string_view& rest)
{
    const std::size_t end = rest.find('\0');
    const std::string part(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return part;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    char inMemory[] = "/dev/shm/watchlist_fuzz_XXXXXX";  // each save waits for the disk elsewhere
    char onDisk[] = "/tmp/watchlist_fuzz_XXXXXX";
    const char* const made = mkdtemp(inMemory);
    const char* const directory = made ? made : mkdtemp(onDisk);
    Check(directory != nullptr, "no directory");
    std::filesystem::current_path(directory);
    std::filesystem::create_directory("userconfig");
    std::atexit([] { std::filesystem::remove_all(std::filesystem::current_path()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kStep = 4;
    constexpr int kMostSteps = 50;  // each writes a file
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const std::string userText = CutAtNul(rest);
    const std::string latestText = CutAtNul(rest);
    Comparison comparison(userText, latestText);
    for (int step = 0; step < kMostSteps && rest.size() >= kStep; ++step, rest.remove_prefix(kStep)) {
        const StringMap stock{{"stockcode", std::string(1, rest[1])}, {"market", std::string(1, rest[2])}};
        comparison.Step(static_cast<unsigned char>(rest[0]), stock, static_cast<unsigned char>(rest[3]));
    }
    comparison.End();
    return 0;
}
