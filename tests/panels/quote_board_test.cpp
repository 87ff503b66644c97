#include <QItemSelectionModel>
#include <QPaintEvent>

#include "hosting/operate_message.h"
#include "hosting/widget_properties.h"
#include "push_texts.h"
#include "quote_board/quote_board_module.h"
#include "quote_board/quote_detail_view.h"
#include "quote_board/quote_list_model.h"
#include "quote_board/quote_list_view.h"
#include "recording_manager.h"
#include "support/literals.h"
#include "support/test.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

/// A board as the library makes one.
struct Board {
    explicit Board(
        const char* creation = R"({"create_source":"panelry","init_param":null,"need_display":"1"})")
    {
        InstanceInfo info;
        info.module_id = kQuoteBoardId;
        module = std::make_shared<QuoteBoardModule>(info);
        module->m_manager = &manager;
        module->Initialize(static_cast<int>(kQuoteBoardId), "", "", creation);
        StringMap none{{"market", ""}, {"stockcode", ""}, {"stockname", ""}};
        module->OnMessage(kStockSelected, &none);
    }

    void Push(const QByteArray& text, bool addressed = true) const
    {
        if (addressed) {
            Send(*module, kInitData, text.constData());
        }
        Send(*module, kPushData, text.constData());
    }

    void Select(const char* code) const
    {
        StringMap stock{{"stockcode", code}};
        module->OnMessage(kStockSelected, &stock);
    }

    QuoteBoardWidget* Widget() const { return static_cast<QuoteBoardWidget*>(module->GetWidget()); }
    QuoteListView* List() const { return Widget()->findChild<QuoteListView*>(); }
    QString Current() const { return Widget()->Current() ? Widget()->Current()->code : QString(); }

    RecordingManager manager;
    std::shared_ptr<QuoteBoardModule> module;
};

/// What of a widget has been painted since the last Clear().
class PaintLog : public QObject
{
public:
    explicit PaintLog(QWidget* widget) { widget->installEventFilter(this); }

    void Clear() { painted = QRegion(); }

    QRegion painted;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            painted += static_cast<QPaintEvent*>(event)->region();
        }
        return false;
    }
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
        Send(*board.module, kInitData, R"({"quotes":[{"code":"000001","last":"11.50"}]})");
        Send(*board.module, kPushData, R"({"quotes":[{"code":"000001","last":"11.60"}]})");
        QCOMPARE(board.Widget()->Pushes(), 4);
        QCOMPARE(board.Widget()->Book().Quotes()[2].last, Price(11600000));
        QCOMPARE(board.Current(), "600519"_q);  // the first one, without a word to others
        QVERIFY(board.manager.sent.empty());
    }

    void BadPushesAreToldAndCostNothing()
    {
        Board board;
        board.Push(ThreeStocks());
        const QVariantMap before = board.Widget()->ModuleData();
        const auto told = [&board](const char* text) {
            return board.Widget()->StatusText().contains(QString::fromUtf8(text));
        };
        board.Push(R"({"notice":"to all panels"})", false);
        QVERIFY(!told("quotes"));
        board.Push(R"({"notice":"to this one"})");
        QVERIFY(told("quotes"));
        board.Push(R"({"quotes":[{"code":"600519","last":"%2"},{"code":"000001","last":"?"}]})");
        QVERIFY(told("600519 最新价“%2”") && told("另有 1 处"));
        Send(*board.module, kPushData, nullptr);
        QVERIFY(told("JSON"));
        QCOMPARE(board.Widget()->ModuleData(), before);
    }

    void KeysAndMouseTellTheStock()
    {
        ExpectWarning("propagateSizeHints"_q);
        Board board;
        board.Push(ThreeStocks());
        QVERIFY(Show(board.Widget()));
        QuoteListView* const list = board.List();
        QCOMPARE(board.Widget()->focusWidget(), list);  // ready for keys as soon as it is shown
        // At the end already there is no lower one, and to the right no other stock.
        for (const Qt::Key key : {Qt::Key_End, Qt::Key_Down, Qt::Key_Right, Qt::Key_Up, Qt::Key_Home}) {
            QTest::keyClick(list, key);
        }
        for (const int column : {3, 1}) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                              list->visualRect(list->model()->index(2, column)).center());
        }
        QTest::keyClicks(list, "51"_q);

        QStringList told;
        for (const RecordingManager::Sent& sent : board.manager.sent) {
            QCOMPARE(sent.msgId, int(kStockSelected));
            QCOMPARE(sent.sender, board.module.get());
            QCOMPARE(sent.target, kAlongLink);
            QCOMPARE(sent.stock.size(), std::size_t(3));
            told += QString::fromStdString(sent.stock.at("stockcode") + sent.stock.at("market") +
                                           sent.stock.at("stockname"));
        }
        const QString third = "00000132丙银行"_q;
        const QString second = "51030016乙基金"_q;
        QCOMPARE(told, (QStringList{third, second, "60051916甲股份"_q, third, second}));
        QCOMPARE(board.Current(), "510300"_q);
    }

    void AStockFromOutsideIsSelectedInSilence()
    {
        Board board;
        board.Select("000001");  // before its quote
        board.Push(ThreeStocks());
        QCOMPARE(board.Current(), "000001"_q);
        board.Select("510300");
        QCOMPARE(board.Current(), "510300"_q);
        board.module->OnMessage(kStockSelected, nullptr);
        board.Select("300750");  // which it doesn't know
        QCOMPARE(board.Current(), "510300"_q);
        QVERIFY(board.manager.sent.empty());

        QTest::keyClick(board.List(), Qt::Key_Up);  // the user's choice outlives what was asked for
        board.Push(R"({"quotes":[{"code":"300750","last":"218.60"}]})");
        QCOMPARE(board.Current(), "600519"_q);
    }

    void ACloneStartsWhereItsSourceStands()
    {
        Board source;
        QVERIFY(source.Widget()->property(kSupportClone).toBool());
        source.Push(ThreeStocks());
        source.Select("510300");
        const Board clone(CreationText({}, source.Widget()).c_str());
        QVERIFY(clone.Widget()->Book().Quotes() == source.Widget()->Book().Quotes());
        QCOMPARE(clone.Current(), "510300"_q);
        QVERIFY(clone.manager.sent.empty());
    }

    void InitParamMayHoldQuotes()
    {
        const Board board((R"({"init_param":)" + ThreeStocks() + "}").constData());
        QVERIFY(board.Widget()->StatusText().startsWith("3 只证券 · 等待推送"_q));
        board.Push(ThreeStocks());  // it was this one that opened the board
        QVERIFY(board.Widget()->StatusText().startsWith("3 只证券 · 推送 1 次"_q));
    }

    void OnlyWhatChangedIsRepainted()
    {
        ExpectWarning("propagateSizeHints"_q);
        Board board;
        board.Push(ThreeStocks());
        QVERIFY(Show(board.Widget()));
        auto* const detail = board.Widget()->findChild<QuoteDetailView*>();
        QuoteListView* const list = board.List();
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
                 qPrintable("%1 x %2"_q.arg(value.width()).arg(value.height())));
    }

    void RiseAndFallReachThePicture()
    {
        const QuoteColors colors;
        const std::vector<std::pair<const char*, QColor>> prices{
            {"10.10", colors.rise}, {"9.90", colors.fall}, {"10.00", colors.flat}};
        for (const auto& [last, seen] : prices) {
            Board board;
            board.Push(QByteArray(R"({"quotes":[{"code":"1","prev_close":"10.00","last":"%1"}]})")
                           .replace("%1", last));
            const QImage picture = board.Widget()->grab().toImage();
            QSet<QRgb> shown;
            for (int place = 0; place < picture.width() * picture.height(); ++place) {
                shown.insert(picture.pixel(place % picture.width(), place / picture.width()));
            }
            for (const auto& [other, color] : prices) {
                QVERIFY2(shown.contains(color.rgb()) == (color == seen), last);
            }
        }
    }

    void AWidgetTheLibraryDeletedIsMissedByNobody()
    {
        Board board;
        delete board.module->GetWidget();
        QCOMPARE(board.module->GetWidget(), nullptr);
        board.Select("000001");
        Send(*board.module, 9001, "");
        board.Push(ThreeStocks());
    }
};

PANELRY_TEST(QuoteBoardTest)
#include "quote_board_test.moc"
