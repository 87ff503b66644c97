#include <QJsonDocument>
#include <QStringList>

#include "desk/desk_process.h"
#include "support/test.h"

using namespace panelry::test;

constexpr char kWorkspace[] = R"({
  "panels": [{"id": 41005}, {"id": 41006}, {"id": 41007}, {"id": 41008}, {"id": 41009, "open": false}],
  "market": {"speed": 0, "start": "09:31", "rate": 200, "seed": 5}})";

/// What a trader does in front of the desk with the real library and panels, and what he then sees.
class ScreenTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void anOrderGoesFromTheTicketToTheTables()
    {
        const QTemporaryDir directory;
        m_desk.Start(WriteFile(directory, "day.json", kWorkspace) + " --memory", "");
        QVERIFY(m_desk.SaysNext(R"("event":"played")"));
        QCOMPARE(Does("\"request\":\"wait\",\"selector\":\"#stock_code\""), "");

        // One that waits in the book, and is taken back.
        QCOMPARE(Types("#stock_code", "600000\\n"), "");
        QCOMPARE(Sees("#usable", "可买"), "");
        QCOMPARE(Types("#order_price", "9.90"), "");
        QCOMPARE(Types("#order_amount", "1000"), "");
        QCOMPARE(Presses("#buy_button"), "");
        QCOMPARE(Sees("#order_message", "买限"), "");  // the protected limit is to be confirmed
        QCOMPARE(Presses("#confirm_yes"), "");
        QCOMPARE(Sees("#order_message", "10000001"), "");
        QCOMPARE(Sees("#chedan_table", "10000001"), "");
        QCOMPARE(Does("\"request\":\"press\",\"selector\":\"#chedan_table\",\"row\":0,\"column\":1"), "");
        QCOMPARE(Presses("#cancel"), "");
        QVERIFY(m_desk.Says(R"("what":"cancelled")"));

        // Too much for the account: the broker's word reaches the ticket.
        QCOMPARE(Types("#order_amount", "900000"), "");
        QCOMPARE(Presses("#buy_button"), "");
        QCOMPARE(Sees("#order_message", "买限"), "");
        QCOMPARE(Presses("#confirm_yes"), "");
        QCOMPARE(Sees("#order_message", "资金"), "");
        m_desk.Type("quit\n");
        QCOMPARE(m_desk.Finish(), 0);
    }

private:
    // Asks the probe for something. Empty, or why it wasn't done.
    QString Does(const QString& request)
    {
        m_desk.Type("probe {" + request.toUtf8() + ",\"id\":" + QByteArray::number(++m_asked) + "}\n");
        while (m_desk.SaysNext(R"("code":205)")) {
            const QString answer = QJsonDocument::fromJson(m_desk.Heard()).object()["text"].toString();
            if (answer.contains(QString("\"id\":%1,").arg(m_asked))) {
                return answer.contains("\"ok\":true") ? "" : request + ": " + answer;
            }
        }
        return request + ": no answer";
    }
    QString Types(const QString& into, const QString& text)
    {
        return Does(QString(R"("request":"type","selector":"%1","text":"%2","clear":true)").arg(into, text));
    }
    QString Presses(const QString& what)
    {
        return Does(QString(R"("request":"press","visible":true,"selector":"%1")").arg(what));
    }
    QString Sees(const QString& where, const QString& text)
    {
        const QString wait =
            R"("request":"wait","visible":true,"selector":"%1","contains":"%2","timeout":20000)";
        return Does(wait.arg(where, text));
    }

    DeskProcess m_desk;
    int m_asked = 0;
};

PANELRY_TEST(ScreenTest)
#include "screen_test.moc"
