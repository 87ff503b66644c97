#include <QItemSelectionModel>

#include "hosting/operate_message.h"
#include "hosting/widget_properties.h"
#include "paint_log.h"
#include "push_texts.h"
#include "quote_board/quote_board_module.h"
#include "quote_board/quote_detail_view.h"
#include "quote_board/quote_list_model.h"
#include "quote_board/quote_list_view.h"
#include "recording_manager.h"
#include "support/test.h"

using panelry::QuoteBoardModule;
using panelry::QuoteBoardWidget;

namespace
{

/// A board as the library makes one.
struct Board {
    explicit Board(
        const char* creation = R"({"create_source":"panelry","init_param":null,"need_display":"1"})")
    {
        InstanceInfo info;
        info.module_id = panelry::kQuoteBoardId;
        module = std::make_shared<QuoteBoardModule>(info);
        module->m_manager = &manager;
        module->Initialize(static_cast<int>(panelry::kQuoteBoardId), "", "", creation);
        StringMap none{{"market", ""}, {"stockcode", ""}, {"stockname", ""}};
        module->OnMessage(panelry::kStockSelected, &none);
    }

    void Push(const QByteArray& text, bool addressed = true) const
    {
        if (addressed) {
            Send(*module, panelry::kInitData, text.constData());
        }
        Send(*module, panelry::kPushData, text.constData());
    }

    QuoteBoardWidget* Widget() const { return static_cast<QuoteBoardWidget*>(module->GetWidget()); }
    panelry::QuoteListView* List() const { return Widget()->findChild<panelry::QuoteListView*>(); }
    QString Current() const { return Widget()->Current() ? Widget()->Current()->code : QString(); }

    RecordingManager manager;
    std::shared_ptr<QuoteBoardModule> module;
};

bool Show(QWidget* widget)
{
    widget->show();
    return QTest::qWaitForWindowExposed(widget);
}

}  // namespace

class QuoteBoardTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void AnAddressedPushIsAppliedOnce()
    {
        Board board;
        board.Push(ThreeStocks());
        QCOMPARE(board.Widget()->Pushes(), 1);
        board.Push(ThreeStocks(), false);  // the same text again, to all panels: a push of its own
        QCOMPARE(board.Widget()->Pushes(), 2);
        Send(*board.module, panelry::kInitData, R"({"quotes":[{"code":"000001","last":"11.50"}]})");
        Send(*board.module, panelry::kPushData, R"({"quotes":[{"code":"000001","last":"11.60"}]})");
        QCOMPARE(board.Widget()->Pushes(), 4);
        QCOMPARE(board.Widget()->Book().Quotes()[2].last, panelry::Price(11600000));
        QCOMPARE(board.Current(), QStringLiteral("600519"));  // the first one, without a word to others
        QVERIFY(board.manager.sent.empty());
    }

    void BadPushesAreToldAndCostNothing()
    {
        Board board;
        board.Push(ThreeStocks());
        const QVariantMap before = board.Widget()->ModuleData();
        board.Push(R"({"notice":"to all panels"})", false);
        QVERIFY(!board.Widget()->StatusText().contains(QStringLiteral("quotes")));
        board.Push(R"({"notice":"to this one"})");
        QVERIFY(board.Widget()->StatusText().contains(QStringLiteral("quotes")));
        board.Push(R"({"quotes":[{"code":"600519","last":"%2"},{"code":"000001","last":"?"}]})");
        QVERIFY(board.Widget()->StatusText().contains(QStringLiteral("600519 最新价“%2”")));
        QVERIFY(board.Widget()->StatusText().contains(QStringLiteral("另有 1 处")));
        Send(*board.module, panelry::kPushData, nullptr);
        QVERIFY(board.Widget()->StatusText().contains(QStringLiteral("JSON")));
        QCOMPARE(board.Widget()->ModuleData(), before);
    }

    void KeysAndMouseTellTheStock()
    {
        ExpectWarning(QStringLiteral("propagateSizeHints"));
        Board board;
        board.Push(ThreeStocks());
        QVERIFY(Show(board.Widget()));
        panelry::QuoteListView* const list = board.List();
        QCOMPARE(board.Widget()->focusWidget(), list);  // ready for keys as soon as it is shown
        const auto click = [list](int row, int column) {
            const QModelIndex cell = list->model()->index(row, column);
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                              list->visualRect(cell).center());
        };
        QTest::keyClick(list, Qt::Key_End);
        QTest::keyClick(list, Qt::Key_Down);   // at the end already
        QTest::keyClick(list, Qt::Key_Right);  // no other stock
        QTest::keyClick(list, Qt::Key_Up);
        QTest::keyClick(list, Qt::Key_Home);
        click(2, 3);
        click(2, 1);
        QTest::keyClicks(list, QStringLiteral("51"));

        QStringList told;
        for (const RecordingManager::Sent& sent : board.manager.sent) {
            QCOMPARE(sent.msgId, int(panelry::kStockSelected));
            QCOMPARE(sent.sender, board.module.get());
            QCOMPARE(sent.target, panelry::kAlongLink);
            QCOMPARE(sent.stock.size(), std::size_t(3));
            told += QString::fromStdString(sent.stock.at("stockcode") + '/' + sent.stock.at("market") + '/' +
                                           sent.stock.at("stockname"));
        }
        const QString first = QStringLiteral("600519/16/甲股份");
        const QString second = QStringLiteral("510300/16/乙基金");
        const QString third = QStringLiteral("000001/32/丙银行");
        QCOMPARE(told, (QStringList{third, second, first, third, second}));
        QCOMPARE(board.Current(), QStringLiteral("510300"));
    }

    void AStockFromOutsideIsSelectedInSilence()
    {
        Board board;
        StringMap later{{"stockcode", "000001"}};
        board.module->OnMessage(panelry::kStockSelected, &later);  // before its quote
        board.Push(ThreeStocks());
        QCOMPARE(board.Current(), QStringLiteral("000001"));
        StringMap known{{"stockcode", "510300"}};
        board.module->OnMessage(panelry::kStockSelected, &known);
        QCOMPARE(board.Current(), QStringLiteral("510300"));
        board.module->OnMessage(panelry::kStockSelected, nullptr);
        StringMap strange{{"stockcode", "300750"}};
        board.module->OnMessage(panelry::kStockSelected, &strange);
        QCOMPARE(board.Current(), QStringLiteral("510300"));
        QVERIFY(board.manager.sent.empty());

        QTest::keyClick(board.List(), Qt::Key_Up);  // the user's choice outlives what was asked for
        board.Push(R"({"quotes":[{"code":"300750","last":"218.60"}]})");
        QCOMPARE(board.Current(), QStringLiteral("600519"));
    }

    void ACloneStartsWhereItsSourceStands()
    {
        Board source;
        QVERIFY(source.Widget()->property(panelry::kSupportClone).toBool());
        source.Push(ThreeStocks());
        StringMap stock{{"stockcode", "510300"}};
        source.module->OnMessage(panelry::kStockSelected, &stock);

        const std::string creation = panelry::CreationText(panelry::CreationMessage(), source.Widget());
        const Board clone(creation.c_str());
        QVERIFY(clone.Widget()->Book().Quotes() == source.Widget()->Book().Quotes());
        QCOMPARE(clone.Current(), QStringLiteral("510300"));
        QVERIFY(clone.manager.sent.empty());
    }

    void InitParamMayHoldQuotes()
    {
        const QByteArray creation = R"({"init_param":)" + ThreeStocks() + "}";
        const Board board(creation.constData());
        QCOMPARE(board.Current(), QStringLiteral("600519"));
        QVERIFY(board.Widget()->StatusText().startsWith(QStringLiteral("3 只证券 · 等待推送")));
        board.Push(ThreeStocks());  // it was this one that opened the board
        QVERIFY(board.Widget()->StatusText().startsWith(QStringLiteral("3 只证券 · 推送 1 次")));
    }

    void OnlyWhatChangedIsRepainted()
    {
        ExpectWarning(QStringLiteral("propagateSizeHints"));
        Board board;
        board.Push(ThreeStocks());
        QVERIFY(Show(board.Widget()));
        auto* const detail = board.Widget()->findChild<panelry::QuoteDetailView*>();
        panelry::QuoteListView* const list = board.List();
        QTest::qWait(0);
        PaintLog listLog(list->viewport());
        PaintLog detailLog(detail);

        board.Push(R"({"quotes":[{"code":"000001","last":"11.50"}]})");  // not the one in full
        const QRect row =
            list->visualRect(list->model()->index(2, 0)).united(list->visualRect(list->model()->index(2, 3)));
        QTRY_COMPARE(listLog.painted.boundingRect(), row);
        QVERIFY(detailLog.painted.isEmpty());

        listLog.Clear();
        board.Push(R"({"quotes":[{"code":"600519","volume":"5","high":"1712.50"}]})");
        QTRY_VERIFY(!detailLog.painted.isEmpty());
        const QRect value = detailLog.painted.boundingRect();
        QVERIFY2(value.width() < detail->width() / 2 && value.height() < detail->height() / 10,
                 qPrintable(QStringLiteral("%1 x %2").arg(value.width()).arg(value.height())));
    }

    void RiseAndFallReachThePicture_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<QColor>("seen");
        const panelry::QuoteColors colors;
        QTest::newRow("rise") << QStringLiteral("10.10") << colors.rise;
        QTest::newRow("fall") << QStringLiteral("9.90") << colors.fall;
        QTest::newRow("unchanged") << QStringLiteral("10.00") << colors.flat;
    }
    void RiseAndFallReachThePicture()
    {
        QFETCH(QString, last);
        QFETCH(QColor, seen);
        Board board;
        board.Push(QStringLiteral(R"({"quotes":[{"code":"1","prev_close":"10.00","last":"%1"}]})")
                       .arg(last)
                       .toUtf8());
        const QImage picture = board.Widget()->grab().toImage();
        const panelry::QuoteColors colors;
        for (const QColor& color : {colors.rise, colors.fall, colors.flat}) {
            bool found = false;
            for (int y = 0; y < picture.height() && !found; ++y) {
                for (int x = 0; x < picture.width() && !found; ++x) {
                    found = picture.pixelColor(x, y) == color;
                }
            }
            QCOMPARE(found, color == seen);
        }
    }

    void AWidgetTheLibraryDeletedIsMissedByNobody()
    {
        Board board;
        board.Push(ThreeStocks());
        delete board.module->GetWidget();
        QCOMPARE(board.module->GetWidget(), nullptr);
        StringMap stock{{"stockcode", "000001"}};
        board.module->OnMessage(panelry::kStockSelected, &stock);
        Send(*board.module, 9001, "");
        board.module->Initialize(1, "", "", "{}");
        Send(*board.module, panelry::kPushData, "{}");
    }
};

PANELRY_TEST(QuoteBoardTest)
#include "quote_board_test.moc"
