#include "ticket/ticket_session.h"

#include <QThread>
#include <atomic>
#include <optional>
#include <thread>

#include "support/test.h"
#include "ticket/stage.h"

using namespace panelry;
using panelry::test::AnswerText;
using panelry::test::Fields;
using panelry::test::Unlike;

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

const AnswerText kBank{"", "", "codetype=17 newprice=10.00", "wtsl=300", "zqdm=600000 zqmc=bank"};
const QByteArray kPush = QByteArray("stockcode=\x11") + "600000 latest_price=";
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
    test::LateTradeProvider m_trades;
    std::optional<TicketSession> m_session{std::in_place, &m_quotes, &m_trades, *this};
    QByteArray m_heard;
    std::string m_choices;
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
