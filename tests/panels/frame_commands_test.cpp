#include "common/frame_commands.h"

#include <QEventLoop>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include "support/test.h"

namespace
{

// Waits until all that was put off so far has run.
bool NextTurn()
{
    bool ran = false;
    QTimer::singleShot(0, [&ran] { ran = true; });
    return QTest::qWaitFor([&ran] { return ran; });
}

}  // namespace

class FrameCommandsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AButtonOfTheOwnFrameIsPressedLater_data()
    {
        QTest::addColumn<int>("msgId");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<bool>("hidden");
        QTest::addColumn<QString>("pressed");
        QTest::newRow("clone") << 9001 << true << false << QStringLiteral("clonebtn_titlebar");
        QTest::newRow("close") << 9002 << true << false << QStringLiteral("closebtn_titlebar");
        QTest::newRow("no more clones") << 9001 << false << false << QString();
        QTest::newRow("no clones at all") << 9001 << true << true << QString();
        QTest::newRow("another command") << 9003 << true << false << QString();
    }
    void AButtonOfTheOwnFrameIsPressedLater()
    {
        QFETCH(int, msgId);
        QFETCH(bool, enabled);
        QFETCH(bool, hidden);
        QWidget frame;
        QWidget widget(&frame);
        QPushButton clone(&frame);
        QPushButton close(&frame);
        clone.setObjectName(QStringLiteral("clonebtn_titlebar"));
        close.setObjectName(QStringLiteral("closebtn_titlebar"));
        clone.setEnabled(enabled);
        clone.setHidden(hidden);
        QString pressed;
        for (QPushButton* const button : {&clone, &close}) {
            connect(button, &QPushButton::clicked, this,
                    [&pressed, button] { pressed += button->objectName(); });
        }
        QCOMPARE(panelry::HandleFrameCommand(msgId, &widget), msgId != 9003);
        QVERIFY(pressed.isEmpty());
        QVERIFY(NextTurn());
        QTEST(pressed, "pressed");
    }

    // The panel may run that loop itself: its open context menu, say.
    void NothingIsPressedInsideANestedLoop()
    {
        QWidget frame;
        auto* const widget = new QWidget(&frame);
        QPushButton close(&frame);
        close.setObjectName(QStringLiteral("closebtn_titlebar"));
        connect(&close, &QPushButton::clicked, this, [widget] { delete widget; });
        QEventLoop outer;
        connect(widget, &QObject::destroyed, &outer, &QEventLoop::quit);
        bool lived = false;
        QTimer::singleShot(0, [widget = QPointer<QWidget>(widget), &lived] {
            QEventLoop nested;
            QVERIFY(panelry::HandleFrameCommand(9002, widget));
            QTimer::singleShot(0, &nested, &QEventLoop::quit);  // behind the press that was put off
            nested.exec();
            lived = !widget.isNull();
        });
        outer.exec();
        QVERIFY(lived);
    }

    void APanelThatIsGoneByThenIsNoMatter()
    {
        auto frame = std::make_unique<QWidget>();
        auto* const widget = new QWidget(frame.get());
        QVERIFY(panelry::HandleFrameCommand(9002, widget));
        frame.reset();
        QVERIFY(NextTurn());

        QWidget bare;
        QVERIFY(panelry::HandleFrameCommand(9002, &bare));
        QVERIFY(NextTurn());
    }
};

PANELRY_TEST(FrameCommandsTest)
#include "frame_commands_test.moc"
