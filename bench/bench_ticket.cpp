// What the rules of the order ticket cost: code masks against expressions that are compiled for each call or
// kept, and what fills a map against a bare fill with the same keys and values.

#include <cstdlib>
#include <functional>
#include <new>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "services/quote_observer.h"
#include "services/trade_observer.h"
#include "support/rounds.h"
#include "ticket/code_masks.h"
#include "ticket/data_deal_base.h"

using panelry::bench::Check;
using panelry::bench::Clock;
using panelry::bench::Figure;

namespace
{

constexpr int kRounds = 61;
std::size_t allocations = 0;  // of the one thread that there is

}  // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace
{

const std::string kMasks =
    "600*;601*;603*;605*;688*;689*;900*;500*;501*;502*;505*;506*;508*;510*;511*;512*;513*;515*;516*;730*";

std::vector<std::string> SplitMasks()
{
    std::vector<std::string> masks;
    std::istringstream list(kMasks);
    for (std::string mask; std::getline(list, mask, ';');) {
        std::erase(mask, '*');
        masks.push_back(mask);
    }
    return masks;
}

bool MatchCompiling(const std::string& code)
{
    for (const std::string& mask : SplitMasks()) {
        if (std::regex_search(code, std::regex("^" + mask + "\\d+"))) {
            return true;
        }
    }
    return false;
}

bool MatchKept(const std::string& code)
{
    static const std::vector<std::regex> expressions = [] {
        std::vector<std::regex> kept;
        for (const std::string& mask : SplitMasks()) {
            kept.emplace_back("^" + mask + "\\d+");
        }
        return kept;
    }();
    for (const std::regex& expression : expressions) {
        if (std::regex_search(code, expression)) {
            return true;
        }
    }
    return false;
}

bool ThreeDecimalsCompiling(const std::string& code, const std::string& market)
{
    const std::string list = panelry::ticket::kThreeDecimalMasks;
    const std::regex entries("([^;]+)");
    for (std::sregex_iterator entry(list.begin(), list.end(), entries), end; entry != end; ++entry) {
        const std::string text = entry->str();
        std::smatch parts;
        const bool scoped = std::regex_search(text, parts, std::regex("([^:;]+):([^:;]+)"));
        std::string mask = scoped ? parts[2].str() : text;
        if (scoped && parts[1] != market) {
            continue;
        }
        if (const std::size_t star = mask.find('*'); star != std::string::npos) {
            mask.insert(star, 1, '.');
        }
        if (std::regex_match(code, std::regex(mask))) {
            return true;
        }
    }
    return false;
}

// Microseconds of `times` calls, checked to give `expected` each.
template <class Call>
double Time(int times, bool expected, Call call)
{
    int right = 0;
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < times; ++i) {
        right += call() == expected;
    }
    const double spent = panelry::bench::Seconds(start);
    Check(right == times, "a mask matched wrongly");
    return spent * 1e6;
}

// `faster` calls of ours take no longer than one of the plain way: that is what is wanted.
template <class Ours, class Plain>
void CompareMatching(const char* name, int faster, bool expected, Ours ours, Plain plain)
{
    Figure figure(name, "µs", 1.0);
    const int plainCalls = faster > 100 ? 1 : 200;
    panelry::bench::Interleave(
        kRounds, [&] { return Time(faster * plainCalls, expected, ours) / plainCalls; },
        [&] { return Time(plainCalls, expected, plain) / plainCalls; },
        [&](double one, double other) { figure.AddRatio(one, other); });
    figure.Print();
}

void MeasureMasks()
{
    DataDealBase rules;
    const std::string code = "300750";  // fits none, so all are tried
    CompareMatching(
        "20 masks, 2,000 times, against compiling once", 2000, false,
        [&] { return rules.MatchCodeMask(kMasks, code); }, [&] { return MatchCompiling(code); });
    CompareMatching(
        "20 masks, 20 times, against kept expressions once", 20, false,
        [&] { return rules.MatchCodeMask(kMasks, code); }, [&] { return MatchKept(code); });
    CompareMatching(
        "IsThreeDecimalCode, 500 times, against compiling once", 500, false,
        [&] { return DataDealBase::IsThreeDecimalCode("600000", "17"); },
        [&] { return ThreeDecimalsCompiling("600000", "17"); });
}

using Pairs = std::vector<std::pair<std::string, std::string>>;

void Assign(StringMap& map, const Pairs& pairs)
{
    for (const auto& [name, value] : pairs) {
        map[name] = value;
    }
}

constexpr int kFills = 2000;

double TimeFills(const std::function<void()>& fill)
{
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < kFills; ++i) {
        fill();
    }
    return panelry::bench::Seconds(start) * 1e6 / kFills;
}

void CompareFills(const char* name, double bound, const std::function<void()>& ours,
                  const std::function<void()>& bare)
{
    Figure figure(name, "µs", bound);
    panelry::bench::Interleave(
        kRounds, [&] { return TimeFills(ours); }, [&] { return TimeFills(bare); },
        [&](double one, double other) { figure.AddRatio(one, other); });
    figure.Print();
}

void AddBook(StringMap& fields)
{
    for (char level = '1'; level <= '5'; ++level) {
        for (const char* side : {"buy_", "sell_"}) {
            fields[side + std::string(1, level) + "_price"] = std::string("10.0") + level;
            fields[side + std::string(1, level) + "_amount"] = std::string("12") + level + "00";
        }
    }
}

std::shared_ptr<QuotePushRecord> Push()
{
    StringMap row{{"stockcode", "\x11" + std::string("600000")},
                  {"stock_name", "浦发银行"},
                  {"benchmarkcode", "T111"},
                  {"latest_price", "10.02"},
                  {"raising_limit", "11.00"},
                  {"limit_down", "9.00"},
                  {"last_closing_price", "10.00"},
                  {"price_decimal", "2"},
                  {"opening_price", "10.01"},
                  {"hq_time", "1767578400"}};
    AddBook(row);
    auto push = std::make_shared<QuotePushRecord>();
    push->head = {{"type", "pushdata"}, {"pushflag", "1"}};
    push->rows = {row};
    return push;
}

void MeasurePushes()
{
    DataDealBase rules;
    const std::shared_ptr<QuotePushRecord> push = Push();
    StringMap written;
    rules.OnQuotePush(push, written);
    Check(written["mrxjg"] == "10.21" && written["rise_fall_scale"] == "0.200000", "a push was read wrongly");
    const Pairs pairs(written.begin(), written.end());
    StringMap ticket = written;
    StringMap bare = written;
    const auto ours = [&] { rules.OnQuotePush(push, ticket); };
    ours();
    const std::size_t before = allocations;
    ours();
    const bool allocated = allocations != before;
    Check(!allocated, "a push onto a ticket that has its keys allocates");
    CompareFills("OnQuotePush on a ticket, against assigning in place", 1.3, ours,
                 [&] { Assign(bare, pairs); });
    CompareFills("OnQuotePush on a ticket, against a fresh fill", 0.5, ours, [&] {
        StringMap fresh;
        Assign(fresh, pairs);
    });
}

// Eight accounts, in columns as hosts have them.
class AccountTable : public HostTable
{
public:
    const char* Name() const override { return "account_table"; }
    int RowCount() const override { return 8; }
    const char* CellText(int row, int column) const override { return m_rows[row][column]; }
    int FindColumn(const char* columnId) const override
    {
        for (int column = 0; column < 6; ++column) {
            if (std::string_view(m_ids[column]) == columnId) {
                return column;
            }
        }
        return -1;
    }

private:
    const char* m_ids[6] = {"2106", "2108", "2167", "2170", "2212", "2214"};
    const char* m_rows[8][6] = {{"A100000001", "16", "1", "60*;68*;51*;58*;01*", "688*;689*", ""},
                                {"0100000001", "32", "2", "00*;30*;15*;16*;12*", "", "300*;301*"},
                                {"C100000001", "18", "3", "900*", "", ""},
                                {"2000000001", "34", "4", "200*", "", ""},
                                {"A100000002", "16", "1", "605*", "688*", ""},
                                {"0100000002", "32", "2", "003*", "", "300*"},
                                {"N100000001", "50", "5", "43*;83*;87*", "", ""},
                                {"H100000001", "60", "6", "0000*", "", ""}};
};

class Quotes : public QuoteProvider
{
public:
    int Attach(int, std::shared_ptr<QuoteObserver>) override { return 0; }
    int QueryQuoteFields(int, StringMap&, std::shared_ptr<StringMap>& fields) override
    {
        fields = m_fields;
        return 0;
    }
    int SubscribeCodes(std::vector<MarketCode>&, bool, std::shared_ptr<QuoteObserver>) override { return 0; }
    int SubscribeTopicA(std::uint32_t, bool, std::shared_ptr<QuoteObserver>) override { return 0; }
    int SubscribeTopicB(std::uint32_t, std::uint32_t, std::uint32_t, bool,
                        std::shared_ptr<QuoteObserver>) override
    {
        return 0;
    }
    int ResolveCodeMarkets(std::vector<MarketCode>&) override { return 0; }
    int ListCodeMatches(std::vector<MarketCode>&, std::vector<std::vector<std::string>>&) override
    {
        return 0;
    }
    int AgreedQuoteCall(std::uintptr_t, std::uintptr_t) override { return 0; }

private:
    std::shared_ptr<StringMap> m_fields = std::make_shared<StringMap>(StringMap{{"price_decimal", "2"}});
};

class Trades : public TradeProvider
{
public:
    int Attach(int, std::shared_ptr<TradeObserver>) override { return 0; }
    int SendTradeRequest(std::shared_ptr<TradeObserver>, std::shared_ptr<ddsdk::TradeRequestParam>) override
    {
        return 0;
    }
    int GetString(const std::string&, std::shared_ptr<std::string>&) override { return -1; }
    int SubscribeKey(const std::string&, bool, std::shared_ptr<TradeObserver>) override { return 0; }
    int SetStringMap(const std::string&, std::shared_ptr<StringMap>) override { return 0; }
    std::shared_ptr<StringMap> GetStringMap(const std::string&) override { return m_range; }
    std::shared_ptr<HostTable> GetTable(const std::string& name) override
    {
        return name == "account_table" ? m_table : nullptr;
    }

private:
    std::shared_ptr<StringMap> m_range = std::make_shared<StringMap>(
        StringMap{{"0_begin", "1"}, {"0_end", "6"}, {"1_begin", "7"}, {"1_end", "9"}});
    std::shared_ptr<HostTable> m_table = std::make_shared<AccountTable>();
};

class Sides : public QuoteObserver, public TradeObserver
{
public:
    void* ObserverSelf() override { return this; }
};

std::shared_ptr<StockInfoAnswer> Answer()
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request = std::make_shared<ddsdk::TradeRequestParam>();
    answer->request->body = {{"zqdm", "600000"}, {"czlb", "B"}};
    answer->request->local = {{"local_market", "17"}};
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>();
    answer->reply->head = {{"codetype", "17"},  {"newprice", "10.02"},  {"ztprice", "11.00"},
                           {"dtprice", "9.00"}, {"prevclose", "10.00"}, {"hqtime", "1767578400"},
                           {"options", "0"}};
    AddBook(answer->reply->head);
    answer->reply->body = {{"wtsl", "1200"}};
    answer->reply->local = {
        {"zqdm", "600000"}, {"zqmc", "\xc6\xd6\xb7\xa2\xd2\xf8\xd0\xd0"}, {"open", "10.01"}};
    return answer;
}

void MeasureAnswers()
{
    Quotes quotes;
    Trades trades;
    const auto sides = std::make_shared<Sides>();
    sides->QuoteObserver::SetProvider(&quotes);
    sides->TradeObserver::SetProvider(&trades);
    DataDealBase rules;
    rules.SetObservers(sides, sides);
    const std::shared_ptr<StockInfoAnswer> answer = Answer();
    StringMap written;
    rules.OnStockInfo(answer, written);
    Check(written["gdzh"] == "A100000001" && written["stock_name"] == "浦发银行",
          "an answer was read wrongly");
    const Pairs pairs(written.begin(), written.end());
    CompareFills(
        "OnStockInfo, 8 accounts, against a fresh fill", 2.0,
        [&] {
            StringMap fresh;
            rules.OnStockInfo(answer, fresh);
        },
        [&] {
            StringMap fresh;
            Assign(fresh, pairs);
        });
}

void MeasureOrders()
{
    DataDealBase rules;
    StringMap order{{"stockcode", "600000"}, {"price", "12.00"},     {"amount", "1000"},
                    {"mmlb", "B"},           {"market", "17"},       {"raising_limit", "11.00"},
                    {"limit_down", "9.00"},  {"price_decimal", "2"}, {"usable_amount", "1000"}};
    StringMap written;
    rules.CheckOrder(order, written);
    Check(written["check"] == "1" && written["other_tip"].size() > 200, "an order was checked wrongly");
    const Pairs pairs(written.begin(), written.end());
    StringMap result = written;
    StringMap bare = written;
    CompareFills(
        "CheckOrder with two tips, against assigning its result", 0, [&] { rules.CheckOrder(order, result); },
        [&] { Assign(bare, pairs); });

    StringMap ticket{{"dd_price", "10.02"},
                     {"dd_money", "100000"},
                     {"czlb", "B"},
                     {"market", "17"},
                     {"stockcode", "600000"}};
    rules.FillMaxAmount(ticket);
    Check(ticket["dd_amount"] == "9900.000000", "an amount was worked out wrongly");
    const Pairs all(ticket.begin(), ticket.end());
    StringMap assigned = ticket;
    CompareFills(
        "FillMaxAmount, against assigning its ticket", 0, [&] { rules.FillMaxAmount(ticket); },
        [&] { Assign(assigned, all); });
}

}  // namespace

int main()
{
    MeasureMasks();
    MeasurePushes();
    MeasureAnswers();
    MeasureOrders();
    return 0;
}
