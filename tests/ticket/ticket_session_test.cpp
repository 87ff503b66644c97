#include "ticket/ticket_session.h"

#include <QThread>
#include <atomic>
#include <optional>
#include <thread>

#include "support/test.h"
#include "support/text_rows.h"
#include "ticket/stage.h"

using namespace panelry;
using panelry::test::AnswerText;
using panelry::test::Fields;
using panelry::test::Given;
using panelry::test::TextRows;
using panelry::test::Unlike;
using panelry::test::Words;

namespace
{

class LateQuotes : public test::KnowingQuoteProvider
{
public:
    int SubscribeCodes(std::vector<MarketCode>& codes, bool on,
                       std::shared_ptr<QuoteObserver> subscriber) override
    {
        m_subscriber = std::move(subscriber);
        m_subscriptions += Words(codes) + (on ? " on" : " off");
        return 0;
    }
    void Push(const QByteArray& row)
    {
        auto push = std::make_shared<QuotePushRecord>();
        push->head = Fields("type=pushdata pushflag=1");
        push->rows = {Fields(row)};
        std::thread([&] { m_subscriber->OnQuotePush(push); }).join();
    }

    std::shared_ptr<QuoteObserver> m_subscriber;
    std::string m_subscriptions;
};

// Also one that refuses, or answers from inside the sending.
class OrderTrades : public test::LateTradeProvider
{
public:
    int SendTradeRequest(std::shared_ptr<TradeObserver> subscriber,
                         std::shared_ptr<ddsdk::TradeRequestParam> request) override
    {
        LateTradeProvider::SendTradeRequest(std::move(subscriber), std::move(request));
        return Record("SendTradeRequest");
    }
};

const AnswerText kBank{"", "", "codetype=17 newprice=10.00", "wtsl=300", "zqdm=600000 zqmc=bank"};
const QByteArray kPush = QByteArray("stockcode=\x11") + "600000 latest_price=";
const ddsdk::TradeRequestParam kOrder{Fields("type=3"), Fields("zqdm=600000"),
                                      Fields("local_request_type=own mine=1")};
const AnswerText kTaken{"", "", "type=3", "ret=0 htbh=1001", ""};
const StringMap kStock = Fields("stockcode=600000 market=17");

class Panel : public TicketListener
{
public:
    // Has asked for the bank and, `answered`, been told.
    explicit Panel(bool answered = false)
    {
        m_session->Open(kStock);
        if (answered) {
            Heard([this] { m_trades.Answer(0, kBank); });
        }
    }

    void OnTicketChanged(TicketNews news) override
    {
        m_heard += news == TicketNews::Stock ? "stock " : news == TicketNews::Quote ? "quote " : "usable ";
        m_onPanelsThread = m_onPanelsThread && QThread::currentThread() == qApp->thread();
        if (m_endAfterNews) {
            m_session.reset();
        }
    }
    void OnTicketChoices(const std::vector<TicketChoice>& choices) override
    {
        m_heard += "choices ";
        for (const TicketChoice& choice : choices) {
            m_choices += choice.market + ':' + choice.stockName + ' ';
        }
    }
    void OnTicketProblem(const std::string& problem) override
    {
        m_heard += problem.empty() ? "" : "problem ";
    }
    void OnOrderAnswered(const OrderAnswer& answer) override
    {
        m_heard += "order " + QByteArray::number(static_cast<qlonglong>(answer.number)) + ' ';
        m_answer = answer;
        m_onPanelsThread = m_onPanelsThread && QThread::currentThread() == qApp->thread();
        if (m_endAfterNews) {
            m_session.reset();
        }
    }

    // All that came by what was done since the last call; nothing came while it was done.
    QByteArray Heard(const std::function<void()>& act = [] {})
    {
        act();
        QByteArray heard = m_heard.isEmpty() ? "" : "too early: ";
        QCoreApplication::sendPostedEvents();  // hands over what the mailbox holds
        heard += m_heard;
        m_heard.clear();
        return heard;
    }

    LateQuotes m_quotes;
    OrderTrades m_trades;
    std::optional<TicketSession> m_session{std::in_place, &m_quotes, &m_trades, *this};
    QByteArray m_heard;
    std::string m_choices;
    OrderAnswer m_answer;
    bool m_onPanelsThread = true;
    bool m_endAfterNews = false;
};

}  // namespace

class TicketSessionTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnAnswerFillsTheTicketOnThePanelsThread()
    {
        Panel panel;
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(0, kBank); }), "stock ");
        QVERIFY(panel.m_onPanelsThread);
        QCOMPARE(Unlike(panel.m_session->Ticket(),
                        "stock_name=bank latest_price=10.00 usable_amount=300 pushflag=0"),
                 QString());
        QCOMPARE(panel.m_quotes.m_subscriptions, std::string(" 17:600000 on"));
    }

    void AnswersThatAreNotForThisTicketAreDropped()
    {
        // Of another stock, another market, another side.
        for (const char* next : {"stockcode=600001 market=17", "stockcode=600000 market=33",
                                 "stockcode=600000 market=17 czlb=S"}) {
            Panel panel;
            panel.m_session->Open(Fields(next));
            QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(0, kBank); }), "");
            QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kBank); }), "stock ");
            panel.m_session->Close();
            QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kBank); }), "");
        }
    }

    void AnswersToOtherRequestsAndIncompleteOnesAreNotTaken()
    {
        Panel panel;
        panel.m_trades.m_sent[0]->head["type"] = "5";
        panel.m_trades.Answer(0, kBank);
        panel.m_trades.m_subscriber->OnFundsPush(nullptr);
        panel.m_trades.m_subscriber->OnFundsPush(std::make_shared<StockInfoAnswer>());
        QCOMPARE(panel.Heard(), "");
    }

    void PushesOfTheStockAreToldOnceForMany()
    {
        Panel panel(true);
        for (int i = 0; i < 1000; ++i) {
            panel.m_quotes.Push(kPush + QByteArray::number(i));
        }
        panel.m_quotes.Push(QByteArray(kPush).replace('\x11', '\x21') + '7');  // of another market
        QCOMPARE(panel.Heard(), "quote ");
        QCOMPARE(Unlike(panel.m_session->Ticket(), "latest_price=999 market=17"), QString());

        panel.m_session->Open(Fields("stockcode=600001 market=17"));
        QCOMPARE(panel.m_quotes.m_subscriptions, std::string(" 17:600000 on 17:600000 off"));
        QCOMPARE(panel.Heard([&] { panel.m_quotes.Push(kPush + '1'); }), "");  // was under way
    }

    void TheUsableAmountIsAskedAndComesAlone()
    {
        Panel panel(true);
        panel.m_session->AskUsableAmount("9.99");
        panel.m_session->AskUsableAmount("9.98");
        QCOMPARE(Unlike(panel.m_trades.m_sent.at(2)->body, "wt_price=9.98 zqdm=600000"), QString());
        AnswerText answer = kBank;
        answer.body = "wtsl=200";
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(2, answer); }), "usable ");
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kBank); }), "");  // for a price that has gone
        QCOMPARE(Unlike(panel.m_session->Ticket(), "usable_amount=200 !local_cx_wtsl"), QString());
    }

    void BeforeItsStockIsKnownATicketAsksForNoUsableAmount()
    {
        Panel panel;
        panel.m_session->AskUsableAmount("9.99");
        panel.Heard([&] { panel.m_trades.Answer(0, {}); });  // nothing: such a stock there is none
        panel.m_session->AskUsableAmount("9.99");
        panel.m_session->Close();
        panel.m_session->AskUsableAmount("9.99");
        QCOMPARE(panel.m_trades.m_sent.size(), std::size_t{1});
    }

    void AnAmbiguousCodeIsToldAsChoices()
    {
        Panel panel;
        AnswerText answer;
        answer.local =
            "dup=2000000000 s1=11,000001,SH,index s10=21,000001,SZ,\xc6\xbd s2=22,000001,SZ,two s3=none";
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(0, answer); }), "choices ");
        QCOMPARE(panel.m_choices, std::string("17:index 34:two 33:平 "));
        QCOMPARE(Unlike(panel.m_session->Ticket(), "stockcode=600000 !duplicatecode_count"), QString());
    }

    void MalformedMasksAreAProblemAndNoEnd()
    {
        Panel panel;
        panel.m_trades.m_strings["Json_TZM_SBA"] = std::make_shared<std::string>("(");
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(0, kBank); }), "problem ");
    }

    void ASessionMayEndInsideItsNewsAndUnderDeliveries()
    {
        Panel panel;
        panel.m_endAfterNews = true;
        panel.m_trades.Answer(0, kBank);
        panel.m_trades.Answer(0, kBank);
        QCOMPARE(panel.Heard(), "stock ");
        QCOMPARE(panel.m_quotes.m_subscriptions, std::string(" 17:600000 on 17:600000 off"));
        panel.m_trades.Answer(0, kBank);  // the host still holds the observers
        panel.m_quotes.Push(kPush + '1');
        QCOMPARE(panel.Heard(), "");

        for (int round = 0; round < 50; ++round) {
            Panel busy;
            const auto answer = kBank.Make();
            answer->request = busy.m_trades.m_sent.at(0);
            std::atomic<bool> stop{false};
            std::thread host([&stop, answer, subscriber = busy.m_trades.m_subscriber] {
                while (!stop) {
                    subscriber->OnFundsPush(answer);
                }
            });
            QTRY_VERIFY(!busy.m_heard.isEmpty());
            busy.m_session.reset();
            stop = true;
            host.join();
        }
    }

    void AnOrderGoesAsItIsAndItsAnswerComesInUtf8_data()
    {
        TextRows("head body local told",
                 {{"taken", "type=3", "ret=0 htbh=1001", "", "type=3 | htbh=1001 ret=0 | "},
                  {"refused, with a reason", "type=3", "ret=-1 ret_text=\xd7\xca\xbd\xf0\xb2\xbb\xd7\xe3", "",
                   "type=3 | ret=-1 ret_text=资金不足 | "},
                  {"broken text", "x=\x80", "ret_text=\xd7\xca\xff!\xbd", "zqmc=\xc6\xbd",
                   "x=\xef\xbf\xbd | ret_text=资\xef\xbf\xbd!\xef\xbf\xbd | zqmc=平"},
                  {"nothing", "", "", "", " |  | "}});
    }

    void AnOrderGoesAsItIsAndItsAnswerComesInUtf8()
    {
        Panel panel(true);
        const std::optional<std::int64_t> number = panel.m_session->SendOrder(kOrder);
        QVERIFY(number.has_value());
        const ddsdk::TradeRequestParam sent = *panel.m_trades.m_sent.at(1);
        QCOMPARE(Words(sent.head) + Words(sent.body), QStringLiteral("type=3zqdm=600000"));
        QCOMPARE(Unlike(sent.local, "mine=1"), QString());
        QCOMPARE(panel.Heard([&] {
            panel.m_trades.Answer(1, {"", "", Given("head"), Given("body"), Given("local")});
        }),
                 "order " + QByteArray::number(static_cast<qlonglong>(*number)) + ' ');
        const OrderAnswer& answer = panel.m_answer;
        QVERIFY(panel.m_onPanelsThread);
        QCOMPARE(QStringList({Words(answer.reply.head), Words(answer.reply.body), Words(answer.reply.local)})
                     .join(QStringLiteral(" | ")),
                 QString::fromUtf8(Given("told")));
        QCOMPARE(Words(answer.order.local), Words(kOrder.local));
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kTaken); }), "");  // doubled
    }

    void OrdersAreAnsweredWhateverTicketIsOpen()
    {
        Panel panel(true);
        std::vector<std::int64_t> numbers;
        QByteArray expected;
        for (int i = 0; i < 40; ++i) {  // more than the mailbox keeps of other news
            numbers.push_back(panel.m_session->SendOrder(kOrder).value_or(0));
            panel.m_session->Open(Fields("stockcode=600001 market=17"));
        }
        panel.m_session->Close();
        const auto answerAll = [&] {
            for (std::size_t i = numbers.size(); i > 0; --i) {
                panel.m_trades.Answer(2 * i - 1, kTaken);
                expected += "order " + QByteArray::number(static_cast<qlonglong>(numbers[i - 1])) + ' ';
            }
        };
        const QByteArray heard = panel.Heard(answerAll);
        QCOMPARE(heard, expected);
    }

    void AnOrderThatTheHostDoesNotTakeIsNotAnswered()
    {
        Panel panel;
        panel.m_trades.m_result = -1;
        QVERIFY(!panel.m_session->SendOrder(kOrder));
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kTaken); }), "");
        panel.m_trades.m_result = 1;  // only a negative result is one
        panel.m_trades.m_inside = [&] { panel.m_trades.Answer(2, kTaken); };
        QVERIFY(panel.m_session->SendOrder(kOrder));
        QVERIFY(panel.Heard().startsWith("order "));  // though it was there before the sending returned
        panel.m_session.emplace(nullptr, nullptr, panel);
        QVERIFY(!panel.m_session->SendOrder(kOrder));
    }

    void AnswersToOthersOrdersAreNotTold()
    {
        Panel mine;
        Panel other;
        QCOMPARE(mine.m_session->SendOrder(kOrder), other.m_session->SendOrder(kOrder));  // the same number
        const auto answer = kTaken.Make();
        answer->request = other.m_trades.m_sent.at(1);
        QCOMPARE(mine.Heard([&] { mine.m_trades.m_subscriber->OnFundsPush(answer); }), "");
        answer->reply.reset();  // of a host that says nothing
        QVERIFY(other.Heard([&] { other.m_trades.m_subscriber->OnFundsPush(answer); }).startsWith("order "));
        QCOMPARE(mine.Heard([&] { mine.m_trades.Answer(1, kTaken); }).left(6), "order ");
    }

    void ASessionMayEndInsideAnOrdersAnswer()
    {
        Panel panel;
        panel.m_endAfterNews = true;
        QVERIFY(panel.m_session->SendOrder(kOrder) && panel.m_session->SendOrder(kOrder));
        QVERIFY(panel
                    .Heard([&] {
                        panel.m_trades.Answer(1, kTaken);
                        panel.m_trades.Answer(2, kTaken);
                    })
                    .count("order") == 1);
    }

    void WithoutProvidersNothingComes()
    {
        Panel panel;
        panel.m_session.emplace(nullptr, nullptr, panel);
        panel.m_session->Open(kStock);
        panel.m_session->AskUsableAmount("1");
        QCOMPARE(panel.Heard(), "");
    }
};

PANELRY_TEST(TicketSessionTest)
#include "ticket_session_test.moc"
