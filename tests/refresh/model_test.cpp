// Random sequences of what a host may do, against a small model that says which marks, subscriptions and
// requests must follow. A sequence that fails is cut down and printed as a script, one word a step.

#include <random>
#include <set>

#include "refresh/refresh_stage.h"

using namespace panelry::test;

namespace
{

constexpr int kStocks = 4;  // the last one has a market that the host corrects
constexpr int kPrices = 4;
constexpr const char* kPriceTexts[kPrices] = {"9.50", "10.00", "10.50", "-"};
constexpr const char* kQuotePrices[kPrices] = {"9.75", "10.25", "10.75", "0.01"};

struct Order {
    int stock;
    bool buys;
    int price;
    int contract;
};

struct Step {
    enum Kind { kTable, kQuote, kData, kLogin, kTick, kFollowUp, kReady, kMode, kKinds };
    Kind kind = kTick;
    bool margin = false;
    std::vector<Order> orders;  // of a table
    int stock = 0, price = 0;   // of a quote
    int contract = 0;           // of data, 0: none
    bool cancel = false;        // of data
    int state = 0;              // of a login
};

using Script = std::vector<Step>;

std::string CodeOf(int stock)
{
    return std::to_string(600000 + stock);
}

int MarketOf(int stock)
{
    return stock == kStocks - 1 ? 17 : stock % 2 == 0 ? 16 : 32;
}

std::string TableWords(const Step& step)
{
    std::string words;
    for (const Order& order : step.orders) {
        const int told = order.stock == kStocks - 1 ? 16 : MarketOf(order.stock);
        words += CodeOf(order.stock) + ' ' + std::to_string(told) + (order.buys ? " B " : " S ") +
                 kPriceTexts[order.price] + ' ' + std::to_string(order.contract) + "; ";
    }
    return words;
}

std::string Words(const Step& step)
{
    const std::string account = step.margin ? "margin " : "normal ";
    switch (step.kind) {
        case Step::kTable:
            return account + "table: " + TableWords(step);
        case Step::kQuote:
            return "quote " + CodeOf(step.stock) + ' ' + kQuotePrices[step.price];
        case Step::kData:
            return account + "data, contract " + std::to_string(step.contract) +
                   (step.cancel ? ", a cancel" : "");
        case Step::kLogin:
            return "login " + std::to_string(step.state);
        case Step::kTick:
            return "tick";
        case Step::kFollowUp:
            return "follow-up";
        case Step::kReady:
            return account + "account ready";
        default:
            return "mode " + std::to_string(step.state);
    }
}

class Dice
{
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}
    int Below(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned>(limit)); }
    bool Toss() { return Below(2) == 1; }

private:
    std::mt19937 m_engine;  // the same numbers everywhere
};

Step RandomStep(Dice& dice)
{
    static constexpr Step::Kind kOften[] = {Step::kTable, Step::kTable, Step::kQuote, Step::kQuote,
                                            Step::kQuote, Step::kData,  Step::kTick};
    Step step;
    step.kind = dice.Below(3) > 0 ? kOften[dice.Below(7)] : static_cast<Step::Kind>(dice.Below(Step::kKinds));
    step.margin = dice.Toss();
    for (int i = dice.Below(5); step.kind == Step::kTable && i > 0; --i) {
        step.orders.push_back({dice.Below(kStocks), dice.Toss(), dice.Below(kPrices), 1 + dice.Below(3)});
    }
    step.stock = dice.Below(kStocks);
    step.price = dice.Below(kPrices);
    step.contract = dice.Below(4);
    step.cancel = dice.Below(3) == 0;
    step.state = dice.Below(3);
    return step;
}

// What must follow, by the rules as one would tell them to somebody.
class Model
{
public:
    // What the host hears of.
    std::string Do(const Step& step)
    {
        m_log.clear();
        switch (step.kind) {
            case Step::kTable:
                ReadTable(step);
                break;
            case Step::kQuote:
                ReadQuote(step);
                break;
            case Step::kData:
                if (step.contract > 0) {
                    Of(step).pending.insert(step.contract);
                }
                Of(step).due = Of(step).due || step.cancel;
                break;
            case Step::kLogin:
                Login(step.state);
                break;
            case Step::kTick:
                for (Account& account : m_accounts) {
                    Refresh(account, account.due);
                    account.due = false;
                }
                break;
            case Step::kFollowUp:
                FollowUp();
                break;
            case Step::kReady:
                Of(step).ready = true;
                break;
            default:
                m_mode = step.state;
        }
        return m_log;
    }

    std::string Due() const
    {
        std::string due = m_accounts[0].due ? "normal" : "";
        return due + (m_accounts[1].due ? (due.empty() ? "margin" : " margin") : "");
    }

private:
    struct Account {
        std::string prefix;
        bool due = false;
        bool ready = false;
        bool done = false;
        std::set<int> pending;
    };

    Account& Of(const Step& step) { return m_accounts[step.margin ? 1 : 0]; }

    void Log(const std::string& what) { m_log += (m_log.empty() ? "" : ", ") + what; }

    void Refresh(const Account& account, bool wanted)
    {
        for (const char* const table :
             {"chedan_table", "gupiao_table", "chengjiao_table", "weituo_table", "funds"}) {
            if (wanted) {
                Log(account.prefix + table);
            }
        }
    }

    // In the order of the keys: the market comes first.
    static std::set<std::pair<int, int>> StocksOf(const std::vector<Order>& orders)
    {
        std::set<std::pair<int, int>> stocks;
        for (const Order& order : orders) {
            stocks.insert({MarketOf(order.stock), order.stock});
        }
        return stocks;
    }

    void LogCodes(const char* verb, const std::set<std::pair<int, int>>& stocks,
                  const std::set<std::pair<int, int>>& without)
    {
        std::string words;
        for (const auto& stock : stocks) {
            if (without.count(stock) == 0) {
                words += ' ' + std::to_string(stock.first) + ':' + CodeOf(stock.second);
            }
        }
        if (!words.empty()) {
            Log(verb + words);
        }
    }

    void ReadTable(const Step& step)
    {
        const auto before = StocksOf(m_orders);
        m_orders = step.orders;
        m_ordersOf = step.margin ? 1 : 0;
        for (const Order& order : m_orders) {
            Of(step).pending.erase(order.contract);
        }
        const auto now = StocksOf(m_orders);
        LogCodes("codes+", now, before);
        LogCodes("codes-", before, now);
    }

    void ReadQuote(const Step& step)
    {
        static constexpr int kLimits[kPrices] = {950, 1000, 1050, 0};
        static constexpr int kLatest[kPrices] = {975, 1025, 1075, 1};
        for (const Order& order : m_orders) {
            const int limit = kLimits[order.price];
            const int latest = kLatest[step.price];
            if (order.stock == step.stock && (order.buys ? limit > latest : latest > limit)) {
                m_accounts[m_ordersOf].due = true;
            }
        }
    }

    void Login(int state)
    {
        if (state == 0) {
            for (const char* const key : {"auto_refresh_data", "chedan_table", "rzrq_chedan_table"}) {
                Log(std::string("key+ ") + key);
            }
        }
        for (int i = state; i < 2; ++i) {
            Account& account = m_accounts[i];
            Refresh(account, account.ready && !account.done);
            account.done = account.done || account.ready;
        }
    }

    void FollowUp()
    {
        for (Account& account : m_accounts) {
            if (!account.pending.empty()) {
                Log(account.prefix + "chedan_table");
                if (m_mode == 1) {
                    Log(account.prefix + "chengjiao_table");
                    Log(account.prefix + "funds");
                }
            }
            account.pending.clear();
        }
    }

    Account m_accounts[2] = {{"", false, false, false, {}}, {"rzrq_", false, false, false, {}}};
    std::vector<Order> m_orders;
    int m_ordersOf = 0;
    int m_mode = 0;
    std::string m_log;
};

void DoReally(const Step& step, RefreshStage& stage)
{
    switch (step.kind) {
        case Step::kTable:
            stage.PushTable(TableWords(step), step.margin ? "rzrq_chedan_table" : "chedan_table");
            break;
        case Step::kQuote:
            stage.PushQuote(MarketOf(step.stock), CodeOf(step.stock), kQuotePrices[step.price]);
            break;
        case Step::kData:
            stage.PushData({{"htbh", step.contract > 0 ? std::to_string(step.contract) : ""},
                            {"chedan", step.cancel ? "1" : ""},
                            {"rzrq", step.margin ? "1" : "0"}});
            break;
        case Step::kLogin:
            stage.present->OnLoginState(step.state);
            break;
        case Step::kTick:
            stage.present->Tick();
            break;
        case Step::kFollowUp:
            stage.present->FollowUp();
            break;
        case Step::kReady:
            stage.host.SetString(step.margin ? "authority_1" : "authority_0", "1");
            break;
        default:
            stage.Set("autorefresh_mode_afterwt", std::to_string(step.state).c_str());
    }
}

// What went wrong, and at which step; empty if nothing did.
std::string Play(const Script& script)
{
    RefreshStage stage;
    for (int stock = 0; stock < kStocks; ++stock) {
        stage.host.m_markets[CodeOf(stock)] = static_cast<std::uint8_t>(MarketOf(stock));
    }
    stage.Start();
    stage.host.TakeLog();
    Model model;
    for (const Step& step : script) {
        const std::string expectedLog = model.Do(step);
        DoReally(step, stage);
        const std::string log = stage.host.TakeLog();
        if (log != expectedLog || stage.Due() != model.Due()) {
            return "after " + Words(step) + "\n  host heard: " + log + "\n  expected:   " + expectedLog +
                   "\n  marked: " + stage.Due() + "\n  expected: " + model.Due();
        }
    }
    return {};
}

// Leaves out what isn't needed for the failure.
Script Shortened(Script script)
{
    for (std::size_t i = script.size(); i-- > 0;) {
        Script shorter = script;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(i));
        if (!Play(shorter).empty()) {
            script = shorter;
        }
    }
    return script;
}

std::string Report(unsigned seed, const Script& script)
{
    std::string report = "sequence " + std::to_string(seed) + ":\n";
    for (const Step& step : script) {
        report += "  " + Words(step) + '\n';
    }
    return report + Play(script);
}

}  // namespace

class ModelTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void RandomSequencesFollowTheModel()
    {
        const unsigned sequences = qEnvironmentVariableIsSet("PANELRY_SOAK") ? 20'000 : 500;
        for (unsigned seed = 1; seed <= sequences; ++seed) {
            Dice dice(seed);
            Script script(static_cast<std::size_t>(5 + dice.Below(30)));
            for (Step& step : script) {
                step = RandomStep(dice);
            }
            if (!Play(script).empty()) {
                QFAIL(Report(seed, Shortened(script)).c_str());
            }
        }
    }
};

PANELRY_TEST(ModelTest)

#include "model_test.moc"
