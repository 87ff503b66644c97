#include <QTemporaryDir>

#include "desk/terminal.h"
#include "support/test.h"

using panelry::test::Terminal;

namespace
{

QString Text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

}  // namespace

/// The prompt, on a terminal.
class PromptTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void wordsAreCompletedAndLinesRemembered()
    {
        const QTemporaryDir state;
        const QStringList arguments{Text("-"), Text("--market"), Text("--memory"), Text("--speed"),
                                    Text("0")};
        {
            Terminal terminal;
            terminal.Start(arguments, state.path());
            terminal.Type("fau\tla\t7");
            QVERIFY(terminal.ShowsRow(Text("desk> fault late 7")));
            terminal.Type("\r");
            QVERIFY(terminal.Shows(Text("fault  late on, 7")));
            terminal.Type("fault late off\r");
            QVERIFY(terminal.Shows(Text("fault  late off")));
            terminal.Type("scenario limit\t\t");  // the two that begin so are listed
            QVERIFY(terminal.Shows(Text("limit-down")));
            terminal.Type("up 60051\t");
            QVERIFY(terminal.ShowsRow(Text("desk> scenario limit-up 600519 ")));
            terminal.Type("\x15quit\r");  // Ctrl-U
            QCOMPARE(terminal.Finish(), 0);
        }
        Terminal terminal;
        terminal.Start(arguments, state.path());
        QVERIFY(terminal.ShowsRow(Text("desk> ")));
        terminal.Type("\033[A\033[A");
        QVERIFY(terminal.ShowsRow(Text("desk> fault late off")));
        terminal.Type("\033[A\r");
        QVERIFY(terminal.Shows(Text("fault  late on, 7")));
        terminal.Type("\x04");  // Ctrl-D
        QVERIFY(terminal.Shows(Text("stop  quit")));
        QCOMPARE(terminal.Finish(), 0);
    }

    // The line is longer than the terminal is wide, and the cursor stands in its middle.
    void aLineSurvivesWhatIsWrittenMeanwhile()
    {
        const QTemporaryDir state;
        Terminal terminal;
        terminal.Start({Text("-")}, state.path());
        const QByteArray text = "note " + QByteArray("0123456789").repeated(9) + "行情 end";
        QVERIFY(terminal.ShowsRow(Text("desk> ")));
        terminal.Type("{\"at\":400,\"note\":\"first news\"}\r" + text + "\033[D\033[D\033[D");
        const QString shown = Text("desk> ") + QString::fromUtf8(text);
        QVERIFY(terminal.Shows(Text("note  first news")));
        QVERIFY(terminal.Shows(shown.mid(80)));
        QVERIFY(terminal.Rows().contains(shown.left(80)));
        terminal.Type("X\r");
        QVERIFY(terminal.Shows(Text("unknown command \"note\"")));
        QVERIFY2(terminal.Rows().contains(shown.mid(80).replace(Text("end"), Text("Xend"))),
                 qPrintable(terminal.Rows().join(QLatin1Char('\n'))));
        QCOMPARE(terminal.Rows().count(shown.left(80)), 1);
        QVERIFY2(terminal.Rows().filter(Text("note  first news")).size() == 1,
                 qPrintable(terminal.Rows().join(QLatin1Char(10))));
        terminal.Type("quit\r");
        QCOMPARE(terminal.Finish(), 0);
    }

    void eventsAreJsonWhereThatIsWanted()
    {
        const QTemporaryDir state;
        Terminal terminal;
        terminal.Start({Text("-"), Text("--json")}, state.path());
        terminal.Type("funds\r");
        QVERIFY(terminal.Shows(Text("\"where\":\"stdin:1\",\"reason\":\"there is no market")));
        terminal.Type("\x03");  // Ctrl-C
        QVERIFY(terminal.Shows(Text("\"reason\":\"SIGINT\"")));
        QCOMPARE(terminal.Finish(), 0);
    }
};

PANELRY_TEST(PromptTest)
#include "prompt_test.moc"
