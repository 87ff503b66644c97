#include "common/frame_commands.h"

#include <QEventLoop>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include "support/literals.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::test;

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
    void AButtonOfTheOwnFrameIsPressedLater()
    {
        QWidget frame;
        QWidget widget(&frame);
        QPushButton clone(&frame);
        QPushButton close(&frame);
        clone.setObjectName("clonebtn_titlebar"_q);
        close.setObjectName("closebtn_titlebar"_q);
        QString pressed;
        connect(&clone, &QPushButton::clicked, this, [&pressed] { pressed += QLatin1String("clone "); });
        connect(&close, &QPushButton::clicked, this, [&pressed] { pressed += QLatin1String("close "); });
        for (const int command : {9001, 9002, 9003}) {
            QCOMPARE(HandleFrameCommand(command, &widget), command != 9003);
        }
        QVERIFY(pressed.isEmpty());
        QVERIFY(NextTurn());
        QCOMPARE(pressed, "clone close "_q);
        clone.setEnabled(false);  // no more clones
        close.hide();             // not offered at all
        for (const int command : {9001, 9002}) {
            QVERIFY(HandleFrameCommand(command, &widget) && NextTurn());
        }
        QCOMPARE(pressed, "clone close "_q);
    }

    // The panel may run that loop itself: its open context menu, say.
    void NothingIsPressedInsideANestedLoop()
    {
        QWidget frame;
        auto* const widget = new QWidget(&frame);
        QPushButton close(&frame);
        close.setObjectName("closebtn_titlebar"_q);
        connect(&close, &QPushButton::clicked, this, [widget] { delete widget; });
        QEventLoop outer;
        connect(widget, &QObject::destroyed, &outer, &QEventLoop::quit);
        bool lived = false;
        QTimer::singleShot(0, [widget = QPointer<QWidget>(widget), &lived] {
            QEventLoop nested;
            QVERIFY(HandleFrameCommand(9002, widget));
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
        QVERIFY(HandleFrameCommand(9002, widget));
        frame.reset();
        QVERIFY(NextTurn());

        QWidget bare;
        QVERIFY(HandleFrameCommand(9002, &bare));
        QVERIFY(NextTurn());
    }
};

PANELRY_TEST(FrameCommandsTest)
#include "frame_commands_test.moc"
