#include "common/placement.h"

#include <QScreen>

#include "support/rows.h"
#include "support/test.h"

class PlacementTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    // A frame as the library makes it: takes the wanted size before it has the panel, and is shown later.
    void AFrameStandsWhereTheHostWantsIt_data()
    {
        const panelry::test::Rows<const char*, QRect> row("text place");
        row("a corner", R"({"init_param":{"place":[0,0,50,25]}})", {0, 0, 50, 25});
        row("in the middle", R"({"init_param":{"place":[40,30,20,10]}})", {40, 30, 20, 10});
        row("the whole screen", R"({"init_param":{"place":[0,0,100,100]}})", {0, 0, 100, 100});
        row("no word of it", R"({"init_param":{"quotes":[]}})", {});
        row("no parameters", R"({"init_param":null})", {});
        row("nothing at all", "", {});
        row("a clone", R"({"init_data":{},"init_param":{"place":[0,0,50,25]}})", {});
        row("three numbers", R"({"init_param":{"place":[0,0,50]}})", {});
        row("without a size", R"({"init_param":{"place":[0,0,0,50]}})", {});
        row("beyond the screen", R"({"init_param":{"place":[0,0,50,101]}})", {});
        row("texts", R"({"init_param":{"place":["0","0","50","50"]}})", {});
    }
    void AFrameStandsWhereTheHostWantsIt()
    {
        QFETCH(QString, text);
        QFETCH(QRect, place);
        QWidget frame;
        QWidget panel(&frame);
        frame.move(7, 9);
        panelry::PlaceFrame(&panel, text.toUtf8().constData());

        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const int width = panel.property("nwidth").toInt();
        const int height = panel.property("nheight").toInt();
        frame.show();
        if (place.isNull()) {
            QCOMPARE(QSize(width, height), QSize(0, 0));
            QCOMPARE(frame.pos(), QPoint(7, 9));
            return;
        }
        QCOMPARE(QSize(width, height),
                 QSize(screen.width() * place.width() / 100, screen.height() * place.height() / 100));
        const QPoint wanted =
            screen.topLeft() + QPoint(screen.width() * place.x() / 100, screen.height() * place.y() / 100);
        QCOMPARE(frame.pos(), wanted);
        frame.hide();
        frame.move(7, 9);  // the user has moved it since
        frame.show();
        QCOMPARE(frame.pos(), QPoint(7, 9));
    }
};

PANELRY_TEST(PlacementTest)
#include "placement_test.moc"
