#include <QApplication>
#include <QLineEdit>
#include <QPushButton>

#include "support/rows.h"
#include "support/test.h"
#include "watchlist/fake_library.h"
#include "watchlist/list_stage.h"
#include "watchlist/stock_list_model.h"
#include "watchlist/stock_list_view.h"
#include "watchlist/watchlist_module.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

// A panel in front of a service with three stocks in the user's list and two latest ones.
class PanelStage
{
public:
    explicit PanelStage(const char* file = nullptr) : m_library(Prepared(m_lists, file))
    {
        InstanceInfo info;
        info.module_id = kWatchlistPanelId;
        m_module = std::make_unique<WatchlistModule>(info);
        m_module->m_manager = &m_library;
        m_module->Initialize(kWatchlistPanelId, "", "", R"({"init_param":null})");
        Widget().grab();  // lays it out
    }

    WatchlistWidget& Widget() const { return *static_cast<WatchlistWidget*>(m_module->GetWidget()); }
    StockListView& View(WatchlistWidget::Tab tab = WatchlistWidget::kWatchlist) const
    {
        Widget().ShowTab(tab);
        return *Widget().View(tab);
    }
    std::string Shown() const { return Words(Widget().Watchlist()->Stocks()); }
    QPoint MiddleOf(int row) const { return View().visualRect(View().model()->index(row, 0)).center(); }

    ListStage m_lists;
    FakeLibrary m_library;
    std::unique_ptr<WatchlistModule> m_module;

private:
    static WatchlistManagerPresent& Prepared(ListStage& lists, const char* file)
    {
        lists.Put(kUserFile, file ? file : "");
        lists.Load();
        if (!file) {
            lists.Request(kAddStocks, "600000/16=a 000001/32=b 600519/16=c");
            for (StringMap& stock : Stocks("9/16=nine 600000/16=a")) {
                lists.m_present->OnStockSelected(&stock);
            }
        }
        return *lists.m_present;
    }
};

void DragTo(StockListView& view, const QPoint& at)
{
    QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view.viewport(), &move);
}

}  // namespace

class WatchlistPanelTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void APickTellsTheOtherPanels()
    {
        const auto pick = [](WatchlistWidget::Tab tab, bool byMouse) {
            PanelStage stage;
            StockListView& view = stage.View(tab);
            if (byMouse) {
                QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, stage.MiddleOf(1));
            } else {
                view.SelectRow(1);
                QTest::keyClick(&view, Qt::Key_Return);
            }
            return Words(stage.m_library.m_selected) + ", " + Words(stage.Widget().Latest()->Stocks());
        };
        const std::string fromWatchlist = "000001/32=b, 000001/32=b 600000/16=a 9/16=nine";
        QCOMPARE(pick(WatchlistWidget::kWatchlist, false), fromWatchlist);
        QCOMPARE(pick(WatchlistWidget::kWatchlist, true), fromWatchlist);
        QCOMPARE(pick(WatchlistWidget::kLatest, false),
                 std::string("9/16=nine+from_lastest, 600000/16=a 9/16=nine"));
    }

    void RowsAreMovedByKeyAndMouse()
    {
        const auto moved = [](int from, int to, bool byMouse) {  // the list, and the row that is current then
            PanelStage stage;
            StockListView& view = stage.View();
            if (byMouse) {
                const QPoint beyondTheMiddle(0, to > from ? 3 : -3);
                QTest::mousePress(view.viewport(), Qt::LeftButton, {}, stage.MiddleOf(from));
                DragTo(view, stage.MiddleOf(1) + QPoint(0, QApplication::startDragDistance()));
                DragTo(view, stage.MiddleOf(to) + beyondTheMiddle);
                QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, stage.MiddleOf(to));
            } else {
                view.SelectRow(from);
                QTest::keyClick(&view, to > from ? Qt::Key_Down : Qt::Key_Up, Qt::AltModifier);
            }
            const bool isSaved = stage.m_lists.List(kUserFile) == stage.Shown();
            return stage.Shown() + (isSaved ? ", " : ", not saved, ") + std::to_string(view.Row());
        };
        QCOMPARE(moved(0, 2, true), std::string("000001/32=b 600519/16=c 600000/16=a, 2"));
        QCOMPARE(moved(2, 0, true), std::string("600519/16=c 600000/16=a 000001/32=b, 0"));
        QCOMPARE(moved(0, 1, false), std::string("000001/32=b 600000/16=a 600519/16=c, 1"));
        QCOMPARE(moved(0, -1, false), std::string("600000/16=a 000001/32=b 600519/16=c, 0"));
    }

    void DeleteRemovesAndLeavesTheNeighbourCurrent()
    {
        PanelStage stage;
        StockListView& view = stage.View();
        view.SelectRow(2);
        QTest::keyClick(&view, Qt::Key_Delete);
        QCOMPARE(stage.Shown(), std::string("600000/16=a 000001/32=b"));
        QCOMPARE(view.Row(), 1);
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(&view, Qt::Key_Delete);
        }
        QCOMPARE(stage.m_lists.Text(kUserFile), QByteArray("[]"));
        QVERIFY(stage.m_library.m_selected.empty());
    }

    void Adding_data()
    {
        const Rows<QString, std::string> row("typed added");
        row("Shanghai by its code", QStringLiteral("688981"), " 688981/16=");
        row("Shenzhen by its code", QStringLiteral("300750"), " 300750/32=");
        row("there already", QStringLiteral("600519"), "");
        row("nothing", QString(), "");
    }

    void Adding()
    {
        QFETCH(const QString, typed);
        QFETCH(const std::string, added);
        PanelStage stage;
        StringMap offered{{"stockcode", "1"}, {"market", "33"}, {"stockname", "one"}};
        stage.m_module->OnMessage(kStockSelected, &offered);
        auto* const code = stage.Widget().findChild<QLineEdit*>(QStringLiteral("code"));
        QCOMPARE(code->text(), QStringLiteral("1"));
        code->selectAll();
        QTest::keyClick(code, Qt::Key_Backspace);
        QTest::keyClicks(code, typed);
        QTest::keyClick(code, Qt::Key_Return);
        const std::string shown = "600000/16=a 000001/32=b 600519/16=c" + added;
        QCOMPARE(stage.Shown(), shown);
        const bool isThere = !typed.isEmpty() && added.empty();
        QCOMPARE(stage.Widget().StatusText().contains(QStringLiteral("已在自选股中")), isThere);
        QCOMPARE(code->text(), QString());

        stage.m_module->OnMessage(kStockSelected, &offered);  // and with one press
        stage.Widget().findChild<QPushButton*>(QStringLiteral("add"))->click();
        QCOMPARE(stage.Shown(), shown + " 1/33=one");
        StringMap listed{{"stockcode", "000001"}, {"market", "32"}};
        stage.m_module->OnMessage(kStockSelected, &listed);
        QCOMPARE(stage.View().Row(), 1);
        QVERIFY(stage.m_library.m_selected.empty());  // what comes in doesn't go out again
    }

    void APanelThatIsGoneHearsNothing()
    {
        for (const bool widgetFirst : {false, true}) {
            PanelStage stage;
            QCOMPARE(stage.m_library.m_listening, 2);
            if (widgetFirst) {
                delete stage.m_module->GetWidget();
                stage.m_lists.Request(kAddStocks, "1/1");
                QVERIFY(!stage.m_module->GetWidget());
            }
            stage.m_module.reset();
            QCOMPARE(stage.m_library.m_listening, 0);
            stage.m_lists.Request(kAddStocks, "2/2");
        }
    }

    void AChangeOfTheListEndsADrag()
    {
        PanelStage stage;
        StockListView& view = stage.View();
        QTest::mousePress(view.viewport(), Qt::LeftButton, {}, stage.MiddleOf(0));
        DragTo(view, stage.MiddleOf(1) + QPoint(0, 3));
        stage.m_lists.Request(kRemoveStocks, "600000/16");  // another row is under the mouse now
        DragTo(view, stage.MiddleOf(1) + QPoint(0, 3));
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, stage.MiddleOf(1));
        QCOMPARE(stage.Shown(), std::string("000001/32=b 600519/16=c"));
        QCOMPARE(stage.m_lists.List(kUserFile), stage.Shown());
    }

    void ABrokenFileIsTold()
    {
        PanelStage stage("{}");
        QVERIFY(stage.Widget().StatusText().contains(QStringLiteral("自选股文件有误")));
    }
};

PANELRY_TEST(WatchlistPanelTest)

#include "watchlist_panel_test.moc"
