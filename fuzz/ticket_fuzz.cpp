// Field maps of any content through the rules of the order ticket: nothing crashes, hangs or raises but a
// malformed mask, and what is written holds what the rules promise.
//
// An input is lines of "map key=value": which map (a letter), a key by number or name, a value of any bytes.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "services/quote_observer.h"
#include "services/trade_observer.h"
#include "ticket/data_deal_base.h"

namespace
{

std::vector<std::string> Words(const char* text)
{
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

// Of all maps: an input names a key by its place here, so that it hits often.
const std::vector<std::string> kKeys = Words(
    "market stockcode price amount mmlb sjwt sbwt kcb cyb rqmc raising_limit limit_down price_decimal "
    "usable_amount support_bhjg issupportxj benchmarkcode hq_time cal_xj latest_price "
    "last_closing_price sell_1_price buy_1_price dd_price dd_money czlb newhand hand "
    "amount_chart_volunit IsXGSG iszhangmask type pushflag repeatcode_num stock_name opening_price "
    "codetype newprice prevclose options canbuy wtsl slbc slsx slxx jgbc zqdm zqmc zrlx dup s1 s2 s3 "
    "s10 local_market local_cx_wtsl rzrq sbwt_tips_B sbwt_tips_S");

const std::vector<std::string> kColumns = Words("2106 2108 2167 2170 2176 2212 2213 2214 2306");

// Text by text, as the input has them.
class Input
{
public:
    explicit Input(std::string_view rest) : m_rest(rest) {}

    bool AtEnd() const { return m_rest.empty(); }
    unsigned Byte()
    {
        const unsigned byte = AtEnd() ? 0 : static_cast<unsigned char>(m_rest.front());
        m_rest.remove_prefix(AtEnd() ? 0 : 1);
        return byte;
    }
    std::string Line()
    {
        const std::size_t end = std::min(m_rest.find('\n'), m_rest.size());
        const std::string line(m_rest.substr(0, end));
        m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
        return line;
    }

private:
    std::string_view m_rest;
};

// A table of the input's lines, in columns that the rules look for.
class FuzzTable : public HostTable
{
public:
    const char* Name() const override { return "table"; }
    int RowCount() const override { return static_cast<int>(m_cells.size() / kColumns.size()); }
    const char* CellText(int row, int column) const override
    {
        const int columns = static_cast<int>(kColumns.size());
        Check(row >= 0 && row < RowCount() && column >= 0 && column < columns, "a cell out of the table");
        return m_cells[static_cast<std::size_t>(row * columns + column)].c_str();
    }
    int FindColumn(const char* columnId) const override
    {
        const auto column = std::find(kColumns.begin(), kColumns.end(), columnId) - kColumns.begin();
        const bool there = column < std::ssize(kColumns) && (m_absent >> column & 1U) == 0;
        return there ? static_cast<int>(column) : -1;
    }

    unsigned m_absent = 0;  // a bit a column
    std::vector<std::string> m_cells;
};

// Expressions that go back and forth over a long code take for ever by their nature: masks stay short.
std::string Short(std::string text)
{
    text.resize(std::min<std::size_t>(text.size(), 8));
    return text;
}

struct World {
    explicit World(Input input)
    {
        table->m_absent = input.Byte();
        while (!input.AtEnd()) {
            const unsigned kind = input.Byte() % 8;
            StringMap* const maps[] = {&ticket, &head, &body, &local, &ticket};
            if (kind < 5) {
                const std::string key = kKeys[input.Byte() % kKeys.size()];
                (*maps[kind])[key] = input.Line();
            } else if (kind == 5) {
                range[input.Byte() % 2 == 0 ? "0_begin" : "0_end"] = input.Line();
            } else {
                table->m_cells.push_back(Short(input.Line()));
            }
        }
    }

    StringMap ticket, head, body, local, range;
    std::shared_ptr<FuzzTable> table = std::make_shared<FuzzTable>();
};

class Trades : public TradeProvider
{
public:
    explicit Trades(World& world) : m_world(world) {}

    int Attach(int, std::shared_ptr<TradeObserver>) override { return 0; }
    int SendTradeRequest(std::shared_ptr<TradeObserver>,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        Check(request->head.at("type") == "1025", "another request");
        return 0;
    }
    int GetString(const std::string&, std::shared_ptr<std::string>& value) override
    {
        value = std::make_shared<std::string>(Short(m_world.local["zqmc"]));
        return 0;
    }
    int SubscribeKey(const std::string&, bool, std::shared_ptr<TradeObserver>) override { return 0; }
    int SetStringMap(const std::string&, std::shared_ptr<StringMap>) override { return 0; }
    std::shared_ptr<StringMap> GetStringMap(const std::string&) override
    {
        return std::make_shared<StringMap>(m_world.range);
    }
    std::shared_ptr<HostTable> GetTable(const std::string&) override { return m_world.table; }

private:
    World& m_world;
};

class Side : public TradeObserver
{
public:
    void* ObserverSelf() override { return this; }
};

// What may be raised is raised for masks and market numbers that are none.
template <class Operation>
void Run(Operation operation)
{
    try {
        operation();
    } catch (const std::regex_error&) {
    } catch (const std::invalid_argument&) {
    } catch (const std::out_of_range&) {
    }
}

const std::string& Written(const StringMap& map, const char* key)
{
    const auto field = map.find(key);
    Check(field != map.end(), key);
    return field->second;
}

void CheckQuote(const StringMap& ticket)
{
    const std::string flags = Written(ticket, "isshowxj") + " " + Written(ticket, "islxjj");
    Check(flags == "0 0" || flags == "1 0" || flags == "1 1",
          "a flag is neither, or limits that aren't offered");
}

void Push(DataDealBase& rules, const World& world)
{
    auto push = std::make_shared<QuotePushRecord>();
    push->head = world.head;
    push->rows = {world.body};
    StringMap out = world.ticket;
    rules.OnQuotePush(push, out);
    if (out != world.ticket) {
        CheckQuote(out);
    }
}

void Answer(DataDealBase& rules, const World& world)
{
    auto answer = std::make_shared<StockInfoAnswer>();
    answer->request =
        std::make_shared<ddsdk::TradeRequestParam>(ddsdk::TradeRequestParam{{}, world.ticket, world.ticket});
    answer->reply = std::make_shared<ddsdk::TradeRequestParam>(
        ddsdk::TradeRequestParam{world.head, world.body, world.local});
    StringMap out = world.ticket;
    rules.OnStockInfo(answer, out);
    Check(Written(out, "pushflag") == "0", "not the answer's flag");
    if (!out.contains("duplicatecode_count")) {
        CheckQuote(out);
        Check(Written(out, "price_step").size() < 100 || world.body.contains("jgbc"), "an endless step");
    }
    StringMap choices;
    rules.ResolveDuplicateCodes(answer, choices);
}

void Order(DataDealBase& rules, const World& world)
{
    StringMap order = world.ticket;
    StringMap result;
    rules.CheckOrder(order, result);
    const std::string& verdict = Written(result, "check");
    Check(verdict == "0" || verdict == "1", "no verdict");
    Check(result.contains("ret_text") == (verdict == "0"), "a refusal without words, or words without it");
    StringMap ticket = world.ticket;
    rules.FillMaxAmount(ticket);
    const std::string& amount = Written(ticket, "dd_amount");
    Check(!amount.empty() && amount.front() != '-', "no amount");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    World world(Input({reinterpret_cast<const char*>(data), size}));
    Trades trades(world);
    const auto side = std::make_shared<Side>();
    side->SetProvider(&trades);
    DataDealBase rules;
    rules.SetObservers({}, side);
    Push(rules, world);
    Run([&] { Answer(rules, world); });
    Order(rules, world);
    StringMap ticket = world.ticket;
    rules.RequestUsableAmount(ticket);
    std::string one;
    std::string other;
    const std::string code = world.ticket["stockcode"];
    Run([&] { rules.FindAccountForCode(0, world.ticket["market"], code, one, other, size % 2 == 0); });
    Run([&] { rules.QueryMarketOrderTypes(0, world.ticket["market"], code); });
    Run([&] { rules.FindAccountByMarket(world.ticket["market"], one); });
    return 0;
}
