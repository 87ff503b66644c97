#include "ticket/ticket_session.h"

#include <QThread>
#include <atomic>
#include <optional>
#include <thread>

#include "support/test.h"
#include "ticket/stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

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
        Note(news == TicketNews::Stock ? "stock " : news == TicketNews::Quote ? "quote " : "usable ");
    }
    void OnTicketChoices(const std::vector<TicketChoice>& choices) override
    {
        for (const TicketChoice& choice : choices) {
            m_choices += choice.market + ':' + choice.stockName + ' ';
        }
        Note("choices ");
    }
    void OnTicketProblem(const std::string& problem) override { Note(problem.empty() ? "" : "problem "); }
    void OnOrderAnswered(const OrderAnswer& answer) override
    {
        m_answer = answer;
        Note(Told(answer.number));
    }
    static QByteArray Told(std::int64_t order)
    {
        return "order " + QByteArray::number(qlonglong{order}) + ' ';
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

    KnowingQuoteProvider m_quotes;
    LateTradeProvider m_trades;
    std::optional<TicketSession> m_session{std::in_place, &m_quotes, &m_trades, *this};
    QByteArray m_heard;
    std::string m_choices;
    OrderAnswer m_answer;
    bool m_onPanelsThread = true;
    bool m_endAfterNews = false;

private:
    void Note(const QByteArray& news)
    {
        m_heard += news;
        m_onPanelsThread = m_onPanelsThread && QThread::currentThread() == qApp->thread();
        if (m_endAfterNews) {
            m_session.reset();
        }
    }
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
        QCOMPARE(panel.m_quotes.m_subscriptions, " 17:600000 on");
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
        QCOMPARE(panel.m_quotes.m_subscriptions, " 17:600000 on 17:600000 off");
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
        QCOMPARE(panel.m_choices, "17:index 34:two 33:平 ");
        QCOMPARE(Unlike(panel.m_session->Ticket(), "stockcode=600000 !duplicatecode_count"), QString());
    }

    void MalformedMasksAreAProblemAndNoEnd()
    {
        Panel panel;
        panel.m_trades.m_strings["Json_TZM_SBA"] = "(";
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(0, kBank); }), "problem ");
    }

    void ASessionMayEndInsideItsNewsAndUnderDeliveries()
    {
        Panel panel;
        panel.m_endAfterNews = true;
        panel.m_trades.Answer(0, kBank);
        panel.m_trades.Answer(0, kBank);
        QCOMPARE(panel.Heard(), "stock ");
        QCOMPARE(panel.m_quotes.m_subscriptions, " 17:600000 on 17:600000 off");
        panel.m_trades.Answer(0, kBank);  // the host still holds the observers
        panel.m_quotes.Push(kPush + '1');
        QCOMPARE(panel.Heard(), "");

        Panel ordering;
        ordering.m_endAfterNews = true;
        QVERIFY(ordering.m_session->SendOrder(kOrder) && ordering.m_session->SendOrder(kOrder));
        ordering.m_trades.Answer(1, kTaken);
        ordering.m_trades.Answer(2, kTaken);
        QCOMPARE(ordering.Heard().count("order"), 1);

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

    void AnOrderGoesAsItIsAndItsAnswerComesInUtf8()
    {
        Panel panel(true);
        const std::optional<std::int64_t> number = panel.m_session->SendOrder(kOrder);
        QVERIFY(number.has_value());
        const ddsdk::TradeRequestParam sent = *panel.m_trades.m_sent.at(1);
        QCOMPARE(Words(sent.head) + Words(sent.body), QStringLiteral("type=3zqdm=600000"));
        QCOMPARE(Unlike(sent.local, "mine=1"), QString());
        const AnswerText broken{"", "", "x=\x80", "ret_text=\xd7\xca\xff!\xbd", "zqmc=\xc6\xbd"};
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, broken); }), Panel::Told(*number));
        const OrderAnswer& answer = panel.m_answer;
        QVERIFY(panel.m_onPanelsThread);
        QCOMPARE(Words(answer.reply.head) + Words(answer.reply.body) + Words(answer.reply.local),
                 QStringLiteral("x=\uFFFDret_text=资\uFFFD!\uFFFDzqmc=平"));
        QCOMPARE(Words(answer.order.local), Words(kOrder.local));
        QCOMPARE(panel.Heard([&] { panel.m_trades.Answer(1, kTaken); }), "");  // doubled
    }

    void OrdersAreAnsweredWhateverTicketIsOpen()
    {
        Panel panel(true);
        QByteArray expected;
        constexpr std::size_t kOrders = 40;  // more than the mailbox keeps of other news
        for (std::size_t i = 0; i < kOrders; ++i) {
            expected.prepend(Panel::Told(panel.m_session->SendOrder(kOrder).value_or(0)));
            panel.m_session->Open(Fields("stockcode=600001 market=17"));
        }
        panel.m_session->Close();
        const QByteArray heard = panel.Heard([&] {
            for (std::size_t i = kOrders; i > 0; --i) {
                panel.m_trades.Answer(2 * i - 1, kTaken);
            }
        });
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
