#include "hosting/event_filter.h"

#include <QPushButton>

#include "hosting/stage.h"
#include "support/test.h"

using namespace panelry::test;

class EventFilterTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void ReportsOfPresses()
    {
        const auto reports = [](const char* times) {  // of the construction and of the presses
            const QStringList steps = QString::fromLatin1(times).split(' ');
            const auto at = [&](int i) { return QTime::fromString(steps[i], "hh:mm:ss.zzz"); };
            FakeHost host;
            QTime now = at(0);
            QWidget widget;
            EventFilter filter(nullptr, [&now] { return now; });
            filter.Watch(&widget);
            for (int i = 1; i < steps.size(); ++i) {
                now = at(i);
                QTest::mousePress(&widget, Qt::RightButton);
            }
            return host.codes.count(0) == host.codes.size() ? host.codes.size() : -1;
        };
        QCOMPARE(reports("10:00:00.000 10:00:29.999"), 0);
        QCOMPARE(reports("10:00:00.900 10:00:30.100"), 1);  // whole seconds count
        QCOMPARE(reports("10:00:00.000 10:01:00.000 10:01:30.000"), 2);
        QCOMPARE(reports("10:00:00.000 10:01:00.000 10:01:20.000 10:01:40.000"), 2);  // silent ones don't
        // Across midnight: silent until the clock has passed the time.
        QCOMPARE(reports("23:00:00.000 23:59:50.000 00:00:10.000 00:01:00.000 23:59:59.000"), 1);
        QCOMPARE(reports("23:00:00.000 23:58:00.000 00:00:10.000 23:58:30.000"), 2);
    }

    void WatchesWhatIsThereAndConsumesNothing()
    {
        FakeHost host;
        QTime now(10, 0);
        QWidget window;
        QWidget middle(&window);
        QPushButton button(&middle);
        EventFilter filter(&window, [&now] { return now; });
        filter.Watch(&window);
        QPushButton late(&middle);
        now = now.addSecs(40);
        QTest::mouseRelease(&button, Qt::LeftButton);
        QTest::keyClick(&button, Qt::Key_Space);
        QTest::mousePress(&late, Qt::LeftButton);  // a button takes its presses: no parent sees them
        QCOMPARE(host.codes, QVector<int>());
        const QSignalSpy clicks(&button, &QPushButton::clicked);
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicks.count(), 1);
        QCOMPARE(host.codes, QVector<int>({0}));
        now = now.addSecs(40);
        QTest::mousePress(&middle, Qt::LeftButton);  // ignored there, so it goes on to the window
        QCOMPARE(host.codes, QVector<int>({0, 0}));
    }

    void TimeIsKeptWithoutAHost()
    {
        QTime now(10, 0);
        QWidget widget;
        EventFilter filter(nullptr, [&now] { return now; });
        filter.Watch(&widget);
        const auto reportsAfter = [&](int seconds) {
            FakeHost host;
            // What the host does in the call finds the filter at rest.
            host.answer = [&](int, void* data) {
                QVERIFY(!data);
                QTest::mousePress(&widget, Qt::LeftButton);
            };
            now = now.addSecs(seconds);
            QTest::mousePress(&widget, Qt::LeftButton);
            return host.codes.size();
        };
        now = now.addSecs(30);
        QTest::mousePress(&widget, Qt::LeftButton);
        QCOMPARE(reportsAfter(29), 0);
        QCOMPARE(reportsAfter(1), 1);
    }
};

PANELRY_TEST(EventFilterTest)
#include "event_filter_test.moc"
