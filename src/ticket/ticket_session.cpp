#include "ticket/ticket_session.h"

#include <QObject>
#include <QPointer>
#include <QUuid>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <utility>

#include "base/host_text.h"
#include "base/number_text.h"
#include "base/wake_up.h"
#include "ticket/ticket_keys.h"

namespace panelry
{

namespace
{

using ticket::Key;
namespace key = ticket::key;

constexpr char kStockInfoRequest[] = "1025";
constexpr std::size_t kMostNews = 32;  // of either kind, in the mailbox

const std::string& kAskedCode = Key("zqdm");
// A key of the caller's own that comes back with the answer: the number of the request stands there.
const std::string& kRequestNumber = Key("local_request_type");

// Every map of a record: which of a host's keys hold texts is known to nobody here.
void ToUtf8(StringMap& fields)
{
    for (auto& [name, value] : fields) {
        value = HostTextToUtf8(value);
    }
}

}  // namespace

/// Between the host's threads, which put something in, and the panel's, which empties it.
class TicketMailbox
{
public:
    struct News {
        std::deque<std::shared_ptr<StockInfoAnswer>> answers;
        std::deque<std::shared_ptr<QuotePushRecord>> pushes;
        std::deque<std::shared_ptr<StockInfoAnswer>> orders;
    };

    /// `reader` is called after something was put in.
    explicit TicketMailbox(WakeUp* reader) : m_reader(reader) {}

    void Put(std::shared_ptr<StockInfoAnswer> answer) { Put(m_news.answers, std::move(answer), kMostNews); }
    void Put(std::shared_ptr<QuotePushRecord> push) { Put(m_news.pushes, std::move(push), kMostNews); }
    /// All are kept: each is about another order.
    void PutOrder(std::shared_ptr<StockInfoAnswer> answer) { Put(m_news.orders, std::move(answer), {}); }

    News Take()
    {
        const std::lock_guard guard(m_lock);
        m_called = false;
        return std::exchange(m_news, {});
    }

    /// From here on nobody is called.
    void Close()
    {
        const std::lock_guard guard(m_lock);
        m_reader = nullptr;
        m_news = {};
    }

private:
    // Of more than `most` the newest stay: each is complete in itself.
    template <class Record>
    void Put(std::deque<Record>& records, Record record, std::optional<std::size_t> most)
    {
        const std::lock_guard guard(m_lock);
        records.push_back(std::move(record));
        if (most && records.size() > *most) {
            records.pop_front();
        }
        Call();
    }

    // With the lock held, so that the reader can't die meanwhile.
    void Call()
    {
        if (m_reader && !std::exchange(m_called, true)) {
            m_reader->Post();
        }
    }

    std::mutex m_lock;  // guards the rest
    WakeUp* m_reader;
    bool m_called = false;
    News m_news;
};

/// The panel's end of both providers.
class TicketSides : public QuoteObserver, public TradeObserver
{
public:
    TicketSides(std::shared_ptr<TicketMailbox> mailbox, std::string orderMark)
        : m_mailbox(std::move(mailbox)), m_orderMark(std::move(orderMark))
    {
    }

    void* ObserverSelf() override { return this; }

    void OnQuotePush(std::shared_ptr<QuotePushRecord> push) override
    {
        if (push) {
            m_mailbox->Put(std::move(push));
        }
    }

    // Every answer comes here, whatever was asked.
    void OnFundsPush(std::shared_ptr<StockInfoAnswer> answer) override
    {
        static const std::string& type = Key("type");
        if (!answer || !answer->request) {
            return;
        }
        if (FieldOf(answer->request->local, kRequestNumber).starts_with(m_orderMark)) {
            m_mailbox->PutOrder(std::move(answer));
        } else if (answer->reply && FieldOf(answer->request->head, type) == kStockInfoRequest) {
            m_mailbox->Put(std::move(answer));
        }
    }

private:
    const std::shared_ptr<TicketMailbox> m_mailbox;
    const std::string m_orderMark;
};

TicketSession::TicketSession(QuoteProvider* quotes, TradeProvider* trades, TicketListener& listener)
    : m_listener(listener),
      m_orderMark(QUuid::createUuid().toString(QUuid::Id128).toStdString() + '-'),
      m_reader(std::make_unique<WakeUp>([this] { TakeNews(); })),
      m_mailbox(std::make_shared<TicketMailbox>(m_reader.get())),
      m_sides(std::make_shared<TicketSides>(m_mailbox, m_orderMark))
{
    m_rules.SetObservers(m_sides, m_sides);
    m_sides->QuoteObserver::SetProvider(quotes);
    m_sides->TradeObserver::SetProvider(trades);
}

TicketSession::~TicketSession()
{
    m_mailbox->Close();
    Unsubscribe();
    m_sides->QuoteObserver::SetProvider(nullptr);
    m_sides->TradeObserver::SetProvider(nullptr);
}

void TicketSession::Open(StringMap fields)
{
    Close();
    m_ticket = std::move(fields);
    m_ticket[kRequestNumber] = IntText(++m_requests);
    m_rules.RequestStockInfo(m_ticket);
}

void TicketSession::Close()
{
    Unsubscribe();
    m_ticket.clear();
    m_usableRequest.clear();
}

void TicketSession::AskUsableAmount(const std::string& price)
{
    const bool answered = m_ticket.contains(key::kPushFlag);
    if (!answered || m_ticket[key::kStockCode].empty()) {
        return;
    }
    StringMap asked = m_ticket;  // the mark that this question carries stays out of the ticket
    asked[key::kPrice] = price;
    m_usableRequest = asked[kRequestNumber] = IntText(++m_requests);
    m_rules.RequestUsableAmount(asked);
}

std::optional<std::int64_t> TicketSession::SendOrder(const ddsdk::TradeRequestParam& order)
{
    const std::int64_t number = ++m_requests;
    auto request = std::make_shared<ddsdk::TradeRequestParam>(order);
    request->local[kRequestNumber] = m_orderMark + IntText(number);
    m_orders[number] = order;  // before it goes: the answer may be here first
    if (m_sides->SendTradeRequest(std::move(request)) < 0) {
        m_orders.erase(number);
        return std::nullopt;
    }
    return number;
}

void TicketSession::TakeNews()
{
    const TicketMailbox::News news = m_mailbox->Take();
    const QPointer<QObject> alive(m_reader.get());  // a listener may end the session
    try {
        // Before all that may end in an exception.
        for (const std::shared_ptr<StockInfoAnswer>& answer : news.orders) {
            if (alive) {
                TellOrder(*answer);
            }
        }
        for (const std::shared_ptr<StockInfoAnswer>& answer : news.answers) {
            if (alive && IsForThisTicket(*answer)) {
                TakeAnswer(answer);
            }
        }
        bool pushed = false;
        for (const std::shared_ptr<QuotePushRecord>& push : news.pushes) {
            pushed = (alive && TakePush(push)) || pushed;
        }
        if (alive && pushed) {
            m_listener.OnTicketChanged(TicketNews::Quote);
        }
    } catch (const std::exception& problem) {
        if (alive) {
            m_listener.OnTicketProblem(problem.what());
        }
    }
}

void TicketSession::TellOrder(const StockInfoAnswer& answer)
{
    const std::string& mark = FieldOf(answer.request->local, kRequestNumber);
    auto order = m_orders.extract(TextToInt64(std::string_view(mark).substr(m_orderMark.size())));
    if (order.empty()) {
        return;  // answered before, or refused when it was sent
    }
    OrderAnswer told{order.key(), std::move(order.mapped()), {}};
    if (answer.reply) {
        told.reply = *answer.reply;
        for (StringMap* const fields : {&told.reply.head, &told.reply.body, &told.reply.local}) {
            ToUtf8(*fields);
        }
    }
    m_listener.OnOrderAnswered(told);
}

// By its number: an answer for the other side, or for a price before, has another usable quantity. And by its
// stock: a host may tell everybody's answers to everybody, and each session counts for itself.
bool TicketSession::IsForThisTicket(const StockInfoAnswer& answer) const
{
    const std::string& number = FieldOf(answer.request->local, kRequestNumber);
    return FieldOf(answer.request->body, kAskedCode) == FieldOf(m_ticket, key::kStockCode) &&
           !number.empty() && (number == FieldOf(m_ticket, kRequestNumber) || number == m_usableRequest);
}

void TicketSession::TakeAnswer(const std::shared_ptr<StockInfoAnswer>& answer)
{
    StringMap filled = m_ticket;
    m_rules.OnStockInfo(answer, filled);
    if (filled.contains("duplicatecode_count")) {
        return TellChoices(filled);
    }
    m_ticket.swap(filled);
    const bool usableOnly = m_ticket.erase(key::kUsableOnly) != 0;
    if (!usableOnly && !m_ticket[key::kStockCode].empty()) {
        Subscribe({ticket::MarketByte(m_ticket[key::kMarket]), m_ticket[key::kStockCode]});
    }
    m_listener.OnTicketChanged(usableOnly ? TicketNews::UsableAmount : TicketNews::Stock);
}

// The choices go to the panel and not into the ticket, which is still the one that was opened.
void TicketSession::TellChoices(const StringMap& filled)
{
    static const std::string& market = Key("duplicatecode_market");
    std::map<int, TicketChoice> choices;  // in the host's order
    // Over the keys that are there: the host's count may be anything. No digit follows in "..marketname0".
    for (auto entry = filled.lower_bound(market + '0'); entry != filled.end() && entry->first < market + ':';
         ++entry) {
        const std::string number = entry->first.substr(market.size());
        choices[TextToInt(number)] = {entry->second, FieldOf(filled, "duplicatecode_stockcode" + number),
                                      FieldOf(filled, "duplicatecode_marketname" + number),
                                      FieldOf(filled, "duplicatecode_stockname" + number)};
    }
    std::vector<TicketChoice> told;
    told.reserve(choices.size());
    for (auto& [number, choice] : choices) {
        told.push_back(std::move(choice));
    }
    m_listener.OnTicketChoices(told);
}

bool TicketSession::TakePush(const std::shared_ptr<QuotePushRecord>& push)
{
    if (m_subscribed.empty() || push->rows.size() != 1 ||
        FieldOf(push->rows.front(), key::kStockCode) != MarketCodeKey(m_subscribed.front())) {
        return false;
    }
    m_rules.OnQuotePush(push, m_ticket);
    return true;
}

void TicketSession::Subscribe(const MarketCode& stock)
{
    Unsubscribe();
    std::vector<MarketCode> wanted{stock};
    if (m_sides->SubscribeCodes(wanted, true) >= 0) {
        m_subscribed = std::move(wanted);
    }
}

void TicketSession::Unsubscribe()
{
    if (!m_subscribed.empty()) {
        std::vector<MarketCode> ended = std::exchange(m_subscribed, {});
        m_sides->SubscribeCodes(ended, false);
    }
}

}  // namespace panelry
