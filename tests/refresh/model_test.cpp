// Random sequences of what a host may do, against a small model that says which marks, subscriptions and
// requests must follow.

#include <numeric>
#include <random>
#include <set>

#include "refresh/refresh_stage.h"
#include "support/sanitized.h"

using namespace panelry::test;

namespace
{

constexpr unsigned kMostSteps = 64;
constexpr int kStocks = 4;  // the last one has a market that the host corrects
constexpr int kPrices = 4;
struct Price {
    const char* text;
    int hundredths;
};
constexpr Price kLimits[kPrices] = {{"9.50", 950}, {"10.00", 1000}, {"10.50", 1050}, {"-", 0}};
constexpr Price kLatest[kPrices] = {{"9.75", 975}, {"10.25", 1025}, {"10.75", 1075}, {"0.01", 1}};
constexpr const char* kContracts[] = {"", "1", "12", "2"};

struct Order {
    int stock;
    bool buys;
    int price;
    int contract;
};

std::string CodeOf(int stock)
{
    return std::to_string(600000 + stock);
}

int MarketOf(int stock)
{
    return stock == kStocks - 1 ? 17 : stock % 2 == 0 ? 16 : 32;
}

std::string TableWords(const std::vector<Order>& orders)
{
    std::string words;
    for (const Order& order : orders) {
        const int told = order.stock == kStocks - 1 ? 16 : MarketOf(order.stock);
        words += CodeOf(order.stock) + ' ' + std::to_string(told) + (order.buys ? " B " : " S ") +
                 kLimits[order.price].text + ' ' + kContracts[order.contract] + "; ";
    }
    return words;
}

// The library, and beside it what must follow, by the rules as one would tell them to somebody.
class Sequence
{
public:
    explicit Sequence(unsigned seed) : m_seed(seed)
    {
        for (int stock = 0; stock < kStocks; ++stock) {
            m_stage.host.m_markets[CodeOf(stock)] = static_cast<std::uint8_t>(MarketOf(stock));
        }
        m_stage.Start();
        m_stage.host.TakeLog();
    }

    /// Plays the steps of these numbers. What goes wrong, with all that was done; else an empty text.
    std::string Play(const std::vector<unsigned>& steps)
    {
        for (const unsigned step : steps) {
            m_engine.seed(m_seed * kMostSteps + step);  // what a step is doesn't depend on the others
            m_expected.clear();
            Step();
            const std::string log = m_stage.host.TakeLog();
            if (log != m_expected || m_stage.Due() != Due()) {
                return m_script + "\n  host heard: " + log + "\n  expected:   " + m_expected +
                       "\n  marked: " + m_stage.Due() + "\n  expected: " + Due();
            }
        }
        return {};
    }

private:
    using Stocks = std::set<std::pair<int, int>>;  // in the order of the keys: the market comes first

    struct Account {
        std::string prefix;
        bool due = false;
        bool ready = false;
        bool done = false;
        std::set<int> pending;
    };

    int Below(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned>(limit)); }

    // Tables, quotes and news are the most frequent.
    void Step()
    {
        static constexpr int kOften[] = {0, 0, 1, 1, 1, 2, 3};
        switch (Below(3) > 0 ? kOften[Below(7)] : Below(8)) {
            case 0:
                return PushTable(Below(2));
            case 1:
                return PushQuote(Below(kStocks));
            case 2:
                return PushData(Below(2));
            case 3:
                return Tick();
            case 4:
                return FollowUp();
            case 5:
                return Login(Below(5) - 1);
            case 6:
                return GetReady(Below(2));
            default:
                m_mode = Below(3);
                Tell("mode " + std::to_string(m_mode));
                m_stage.Set("autorefresh_mode_afterwt", std::to_string(m_mode).c_str());
        }
    }

    void PushTable(int account)
    {
        const Stocks before = WatchedStocks();
        m_ordersOf = account;
        m_orders.resize(static_cast<std::size_t>(Below(5)));
        for (Order& order : m_orders) {
            order = {Below(kStocks), Below(2) == 1, Below(kPrices), 1 + Below(3)};
            m_accounts[account].pending.erase(order.contract);
        }
        Tell("table " + std::to_string(account) + ": " + TableWords(m_orders));
        m_stage.PushTable(TableWords(m_orders), account == 1 ? "rzrq_chedan_table" : "chedan_table");
        ExpectCodes("codes+", WatchedStocks(), before);
        ExpectCodes("codes-", before, WatchedStocks());
    }

    void PushQuote(int stock)
    {
        const auto& [text, latest] = kLatest[Below(kPrices)];
        Tell("quote " + CodeOf(stock) + ' ' + text);
        m_stage.PushQuote(MarketOf(stock), CodeOf(stock), text);
        for (const Order& order : m_orders) {
            const int limit = kLimits[order.price].hundredths;
            if (order.stock == stock && (order.buys ? limit > latest : latest > limit)) {
                m_accounts[m_ordersOf].due = true;
            }
        }
    }

    void PushData(int number)
    {
        Account& account = m_accounts[number];
        const int contract = Below(4);
        const bool cancel = Below(3) == 0;
        Tell("data " + std::to_string(number) + (cancel ? ": cancel " : ": order ") + kContracts[contract]);
        m_stage.PushData({{"htbh", kContracts[contract]},
                          {"chedan", cancel ? "1" : ""},
                          {"rzrq", std::to_string(number)}});
        if (contract > 0) {
            account.pending.insert(contract);
        }
        account.due = account.due || cancel;
    }

    void Tick()
    {
        Tell("tick");
        m_stage.present->Tick();
        for (Account& account : m_accounts) {
            ExpectRefresh(account, account.due);
            account.due = false;
        }
    }

    void FollowUp()
    {
        Tell("follow-up");
        m_stage.present->FollowUp();
        for (Account& account : m_accounts) {
            if (!account.pending.empty()) {
                Expect(account.prefix + "chedan_table");
                if (m_mode == 1) {
                    Expect(account.prefix + "chengjiao_table");
                    Expect(account.prefix + "funds");
                }
            }
            account.pending.clear();
        }
    }

    void Login(int state)
    {
        Tell("login " + std::to_string(state));
        m_stage.present->OnLoginState(state);
        if (state == 0) {
            Expect("key+ auto_refresh_data, key+ chedan_table, key+ rzrq_chedan_table");
        }
        for (int i = state < 0 ? 2 : state; i < 2; ++i) {
            Account& account = m_accounts[i];
            ExpectRefresh(account, account.ready && !account.done);
            account.done = account.done || account.ready;
        }
    }

    void GetReady(int account)
    {
        Tell("ready " + std::to_string(account));
        m_stage.host.m_strings["authority_" + std::to_string(account)] = "1";
        m_accounts[account].ready = true;
    }

    std::string Due() const { return RefreshStage::DueWords(m_accounts[0].due, m_accounts[1].due); }

    Stocks WatchedStocks() const
    {
        Stocks stocks;
        for (const Order& order : m_orders) {
            stocks.insert({MarketOf(order.stock), order.stock});
        }
        return stocks;
    }

    void Tell(const std::string& step) { m_script += "\n  " + step; }
    void Expect(const std::string& what) { m_expected += (m_expected.empty() ? "" : ", ") + what; }

    void ExpectRefresh(const Account& account, bool wanted)
    {
        for (const char* const table :
             {"chedan_table", "gupiao_table", "chengjiao_table", "weituo_table", "funds"}) {
            if (wanted) {
                Expect(account.prefix + table);
            }
        }
    }

    void ExpectCodes(std::string words, const Stocks& stocks, const Stocks& without)
    {
        const std::size_t verb = words.size();
        for (const auto& [market, stock] : stocks) {
            if (without.count({market, stock}) == 0) {
                words += ' ' + std::to_string(market) + ':' + CodeOf(stock);
            }
        }
        if (words.size() > verb) {
            Expect(words);
        }
    }

    const unsigned m_seed;
    std::mt19937 m_engine;  // the same numbers everywhere
    RefreshStage m_stage;
    Account m_accounts[2] = {{"", false, false, false, {}}, {"rzrq_", false, false, false, {}}};
    std::vector<Order> m_orders;
    int m_ordersOf = 0;
    int m_mode = 0;
    std::string m_expected;
    std::string m_script;
};

// What goes wrong in a sequence, told by as few of its steps as still go wrong.
std::string TroubleOf(unsigned seed)
{
    std::vector<unsigned> steps(5 + seed % 30);
    std::iota(steps.begin(), steps.end(), 0U);
    std::string trouble = Sequence(seed).Play(steps);
    for (std::size_t last = trouble.empty() ? 0 : steps.size(); last > 0; --last) {
        std::vector<unsigned> fewer = steps;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(last - 1));
        const std::string still = Sequence(seed).Play(fewer);
        if (!still.empty()) {
            steps.swap(fewer);
            trouble = still;
        }
    }
    return trouble;
}

}  // namespace

class ModelTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void RandomSequencesFollowTheModel()
    {
        const bool soak = qEnvironmentVariableIsSet("PANELRY_SOAK");
        const unsigned sequences = soak ? 20'000 : kSanitized ? 500 : 2'000;
        for (unsigned seed = 1; seed <= sequences; ++seed) {
            const std::string trouble = TroubleOf(seed);
            if (!trouble.empty()) {
                QFAIL(("sequence " + std::to_string(seed) + ':' + trouble).c_str());
            }
        }
    }
};

PANELRY_TEST(ModelTest)

#include "model_test.moc"
