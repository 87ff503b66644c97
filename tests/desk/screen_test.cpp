#include <QJsonDocument>
#include <QStringList>

#include "desk/desk_process.h"
#include "support/test.h"

namespace panelry::test
{

namespace
{

constexpr char kWorkspace[] = R"({
  "panels": [{"id": 41005}, {"id": 41006}, {"id": 41007}, {"id": 41008}, {"id": 41009, "open": false}],
  "market": {"speed": 0, "start": "09:31", "rate": 200, "seed": 5}})";

QString Quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// The desk with the real library and panels, and a trader who reads and presses what is on the screen.
class Screen
{
public:
    Screen()
    {
        desk.Start({WriteFile(m_directory, QStringLiteral("day.json"), kWorkspace), Text("--memory")},
                   QString());
    }

    /// The probe's answer; one that isn't ok fails the test's next check of it.
    QJsonObject Ask(const QString& request)
    {
        ++m_asked;
        desk.Type(QStringLiteral("probe {%1,\"id\":%2}\n").arg(request).arg(m_asked).toUtf8().constData());
        const QByteArray mine = QStringLiteral("\\\"id\\\":%1,").arg(m_asked).toUtf8();
        while (desk.SaysNext("\"code\":205")) {
            const QByteArray& line = desk.Heard();
            if (line.contains(mine)) {
                const QString text =
                    QJsonDocument::fromJson(line).object()[QStringLiteral("text")].toString();
                return QJsonDocument::fromJson(text.toUtf8()).object();
            }
        }
        return {};
    }

    /// Empty, or why not.
    QString Does(const QString& request)
    {
        const QJsonObject answer = Ask(request);
        if (answer[QStringLiteral("ok")].toBool()) {
            return {};
        }
        return request + QStringLiteral(": ") +
               QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Compact));
    }

    QString Types(const QString& into, const QString& text)
    {
        return Does(QStringLiteral(R"("request":"type","selector":%1,"text":%2,"clear":true)")
                        .arg(Quoted(into), Quoted(text)));
    }
    QString Presses(const QString& what)
    {
        return Does(QStringLiteral(R"("request":"press","visible":true,"selector":%1)").arg(Quoted(what)));
    }
    QString Sees(const QString& where, const QString& text)
    {
        return Does(
            QStringLiteral(R"("request":"wait","visible":true,"selector":%1,"contains":%2,"timeout":20000)")
                .arg(Quoted(where), Quoted(text)));
    }

    DeskProcess desk;

private:
    QTemporaryDir m_directory;
    int m_asked = 0;
};

#define QSUCCEEDS(operation)                              \
    do {                                                  \
        const QString failure = (operation);              \
        QVERIFY2(failure.isEmpty(), qPrintable(failure)); \
    } while (false)

}  // namespace

/// What a trader does in front of the desk's market, and what he then sees.
class ScreenTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void anOrderGoesFromTheTicketToTheTables()
    {
        Screen screen;
        QVERIFY(screen.desk.WaitFor("event", Text("played")));
        QSUCCEEDS(screen.Does(QStringLiteral(R"("request":"wait","selector":"#stock_code")")));

        // One that waits in the book, and is taken back.
        QSUCCEEDS(screen.Types(Text("#stock_code"), Text("600000\\n")));
        QSUCCEEDS(screen.Sees(Text("#usable"), Text("可买")));
        QSUCCEEDS(screen.Types(Text("#order_price"), Text("9.90")));
        QSUCCEEDS(screen.Types(Text("#order_amount"), Text("1000")));
        QSUCCEEDS(screen.Presses(Text("#buy_button")));
        QSUCCEEDS(
            screen.Sees(Text("#order_message"), Text("买限")));  // the protected limit is to be confirmed
        QSUCCEEDS(screen.Presses(Text("#confirm_yes")));
        QSUCCEEDS(screen.Sees(Text("#order_message"), Text("10000001")));
        QSUCCEEDS(screen.Sees(Text("#chedan_table"), Text("10000001")));
        QSUCCEEDS(screen.Does(Text(R"("request":"press","selector":"#chedan_table","row":0,"column":1)")));
        QSUCCEEDS(screen.Presses(Text("#cancel")));
        QVERIFY(screen.desk.WaitFor("what", Text("cancelled")));

        // Too much for the account: the broker's word reaches the ticket.
        QSUCCEEDS(screen.Types(Text("#order_amount"), Text("900000")));
        QSUCCEEDS(screen.Presses(Text("#buy_button")));
        QSUCCEEDS(screen.Sees(Text("#order_message"), Text("买限")));
        QSUCCEEDS(screen.Presses(Text("#confirm_yes")));
        QSUCCEEDS(screen.Sees(Text("#order_message"), Text("资金")));
        screen.desk.Type("quit\n");
        QCOMPARE(screen.desk.Finish(), 0);
    }
};

}  // namespace panelry::test

using panelry::test::ScreenTest;
PANELRY_TEST(ScreenTest)

#include "screen_test.moc"
