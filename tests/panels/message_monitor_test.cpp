#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>

#include "common/status_line.h"
#include "message_monitor/message_line.h"
#include "message_monitor/message_monitor_module.h"
#include "message_monitor/message_view.h"
#include "recording_manager.h"
#include "support/literals.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

struct Monitor {
    Monitor() { module->Initialize(static_cast<int>(kMessageMonitorId), "", "", "{}"); }

    void SendNumbered(int from, int to) const
    {
        for (int i = from; i < to; ++i) {
            Send(*module, 1, ("number " + std::to_string(i)).c_str());
        }
    }

    MessageMonitorWidget* Widget() const { return static_cast<MessageMonitorWidget*>(module->GetWidget()); }
    MessageView* View() const { return Widget()->View(); }
    QString Status() const { return Widget()->findChild<StatusLine*>()->Shown(); }
    QString First() const { return View()->document()->firstBlock().text(); }
    QString Last() const { return View()->document()->lastBlock().text(); }

    std::shared_ptr<MessageMonitorModule> module = std::make_shared<MessageMonitorModule>(InstanceInfo());
};

}  // namespace

class MessageMonitorTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void PayloadsAreReadByTheirId()
    {
        const QString unread = "（未读取内容）"_q;
        const QString none = "（无内容）"_q;
        constexpr int kLeast = std::numeric_limits<int>::min();
        for (const int text : {kLeast, -1, 100, 101, 103, 118, 124, 199, 208, 500, 8'999, 9'000, 999'999}) {
            QCOMPARE(PayloadText(text, "甲"), "甲"_q);
        }
        for (const int record : {119, 123, 200, 207, 1'000'000, std::numeric_limits<int>::max()}) {
            QCOMPARE(PayloadText(record, "x"), unread);
        }
        QCOMPARE(PayloadText(113, "{\n\"a\":\t1\r\n}"), "{ \"a\": 1  }"_q);
        QCOMPARE(PayloadText(114, nullptr), none);
        QCOMPARE(PayloadText(1'000'000, nullptr), unread);
        QCOMPARE(PayloadText(1, QByteArray(9'000, 'x').constData()),
                 QString(4'000, QLatin1Char('x')) + " …（已截短，共 9000 字节）"_q);
        const StringMap stock{{"stockcode", "600519"}, {"market", "16"}};
        QCOMPARE(PayloadText(102, &stock), "market=16  stockcode=600519"_q);
        QCOMPARE(PayloadText(102, nullptr), none);
    }

    void EveryMessageBecomesALineInOrder()
    {
        const Monitor monitor;
        Send(*monitor.module, 113, "%1 %2\n<b>");
        monitor.module->OnMessage(119, nullptr);  // on another thread in life: must leave no trace
        Send(*monitor.module, 9003, "second");
        QTRY_COMPARE(monitor.View()->Lines(), 2);
        QVERIFY(monitor.First().endsWith("    113  %1 %2 <b>"_q));
        QVERIFY(monitor.Last().endsWith("   9003  second"_q));
        QVERIFY(QTime::fromString(monitor.First().left(12), "HH:mm:ss.zzz"_q).isValid());
        monitor.SendNumbered(0, 5'005);  // faster than they are shown; only the newest are kept
        QTRY_VERIFY(monitor.Last().endsWith("number 5004"_q));
        QCOMPARE(monitor.View()->Lines(), MessageMonitorWidget::kMostLines);
        QVERIFY(monitor.First().endsWith("number 5"_q));
    }

    void PausedMessagesComeLater()
    {
        const Monitor monitor;
        monitor.Widget()->SetPaused(true);
        monitor.SendNumbered(0, 5'003);
        QTRY_VERIFY(monitor.Status().contains("，5000 条待显示"_q));
        QCOMPARE(monitor.View()->Lines(), 0);
        monitor.Widget()->SetPaused(false);
        QCOMPARE(monitor.View()->Lines(), 5'000);
        monitor.SendNumbered(5'003, 5'004);
        monitor.Widget()->Clear();  // the one that waits goes too
        monitor.SendNumbered(5'004, 5'005);
        QTRY_COMPARE(monitor.View()->Lines(), 1);
        QVERIFY(monitor.First().endsWith("number 5004"_q));
    }

    void WhoScrollsUpReadsInPeace()
    {
        ExpectWarning("propagateSizeHints"_q);
        const Monitor monitor;
        monitor.Widget()->show();
        QVERIFY(QTest::qWaitForWindowExposed(monitor.Widget()));
        monitor.SendNumbered(0, MessageMonitorWidget::kMostLines);
        QTRY_COMPARE(monitor.View()->Lines(), MessageMonitorWidget::kMostLines);
        QVERIFY(monitor.View()->IsFollowing());
        const auto firstInView = [&monitor] {
            return monitor.View()->cursorForPosition(QPoint(8, 8)).block().text();
        };

        monitor.View()->verticalScrollBar()->setValue(200);
        const QString reading = firstInView();
        QVERIFY(reading.endsWith("number 200"_q));
        monitor.SendNumbered(5'000, 5'030);
        QTRY_VERIFY(monitor.Last().endsWith("number 5029"_q));
        QCOMPARE(firstInView(), reading);
        QVERIFY(monitor.Status().contains("已停止滚动"_q));
        QTest::keyClick(monitor.View(), Qt::Key_End);
        QVERIFY(monitor.View()->IsFollowing());
        monitor.SendNumbered(5'030, 5'031);
        QTRY_VERIFY(monitor.Last().endsWith("number 5030"_q));
        QVERIFY(monitor.View()->IsFollowing());
    }

    void KeysWorkTheActions()
    {
        ExpectWarning("propagateSizeHints"_q);
        const Monitor monitor;
        monitor.Widget()->show();
        QVERIFY(QTest::qWaitForWindowActive(monitor.Widget()));
        monitor.SendNumbered(0, 2);
        QTRY_COMPARE(monitor.View()->Lines(), 2);
        QTest::keyClick(monitor.View(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), monitor.First() + QLatin1Char('\n') + monitor.Last());
        monitor.View()->find("number"_q, QTextDocument::FindBackward);
        QTest::keyClick(monitor.View(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), "number"_q);  // the selection alone

        QCOMPARE(monitor.View()->lineWrapMode(), QPlainTextEdit::WidgetWidth);
        QTest::keyClick(monitor.View(), Qt::Key_W, Qt::AltModifier);
        QCOMPARE(monitor.View()->lineWrapMode(), QPlainTextEdit::NoWrap);
        QTest::keyClick(monitor.View(), Qt::Key_P, Qt::AltModifier);
        monitor.SendNumbered(2, 3);
        QTest::keyClick(monitor.View(), Qt::Key_P, Qt::AltModifier);
        QCOMPARE(monitor.View()->Lines(), 3);
        QTest::keyClick(monitor.View(), Qt::Key_L, Qt::ControlModifier);
        QCOMPARE(monitor.View()->Lines(), 0);
    }

    void AWidgetTheLibraryDeletedIsMissedByNobody()
    {
        const Monitor monitor;
        delete monitor.module->GetWidget();
        Send(*monitor.module, 9002, "x");
        QCOMPARE(monitor.module->GetWidget(), nullptr);
    }
};

PANELRY_TEST(MessageMonitorTest)
#include "message_monitor_test.moc"
