#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QShortcut>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "recording_manager.h"
#include "support/rows.h"
#include "support/test.h"
#include "ui_probe/ui_probe_module.h"
#include "ui_probe/widget_values.h"

using panelry::Probe;
using panelry::test::Rows;

namespace
{

QJsonObject Json(QString text)
{
    text.replace(QLatin1Char('\''), QLatin1Char('"'));
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

/// A probe and what it answers.
class Asker
{
public:
    Asker() : probe(std::make_unique<Probe>([this](const QByteArray& text) { Take(text); })) {}

    /// The answer to a request that stands between the braces, quotes written as '.
    QJsonObject operator()(const QString& request)
    {
        const std::size_t before = answers.size();
        Send(request);
        return QTest::qWaitFor([&] { return answers.size() > before; }) ? answers.back() : QJsonObject();
    }
    void Send(QString request)
    {
        probe->Take(QStringLiteral("{%1}")
                        .arg(request.replace(QLatin1Char('\''), QLatin1Char('"')))
                        .toUtf8()
                        .constData());
    }
    QString Error(const QString& request)
    {
        const QJsonObject answer = (*this)(request);
        return answer[QLatin1String("ok")] == false ? answer[QLatin1String("error")].toString()
                                                    : QStringLiteral("no error");
    }
    bool Ok(const QString& request)
    {
        const QJsonObject answer = (*this)(request);
        if (answer[QLatin1String("ok")] != true) {
            qInfo() << request << answer;
        }
        return answer[QLatin1String("ok")] == true;
    }

    std::unique_ptr<Probe> probe;
    std::vector<QJsonObject> answers;

private:
    void Take(const QByteArray& text) { answers.push_back(QJsonDocument::fromJson(text).object()); }
};

/// A view that paints its price itself and tells screen readers.
class PriceView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double price MEMBER m_price)
    Q_PROPERTY(QString stock MEMBER m_stock)

public:
    using QWidget::QWidget;

private:
    double m_price = 12.5;
    QString m_stock = QStringLiteral("演示股份");
};

/// A window with a widget of each kind.
class Stage : public QWidget
{
    Q_OBJECT

public:
    Stage()
    {
        setObjectName(QStringLiteral("stage"));
        setWindowTitle(QStringLiteral("模拟窗口"));
        auto* const layout = new QVBoxLayout(this);
        const auto add = [layout](QWidget* widget, const char* name) {
            widget->setObjectName(QLatin1String(name));
            layout->addWidget(widget);
        };
        add(label, "label");
        add(buy, "buy");
        add(sell, "sell");
        add(check, "check");
        add(line, "line");
        add(password, "password");
        add(spin, "spin");
        add(combo, "combo");
        add(notes, "notes");
        add(tabs, "tabs");
        add(table, "table");
        add(tree, "tree");
        add(price, "price");
        line->setMaxLength(8);
        password->setEchoMode(QLineEdit::Password);
        password->setText(QStringLiteral("secret"));
        spin->setRange(100, 900);
        spin->setSuffix(QStringLiteral(" 股"));
        combo->addItems({QStringLiteral("限价"), QStringLiteral("市价")});
        tabs->addTab(new QLabel(QStringLiteral("甲")), QStringLiteral("持仓(&H)"));
        tabs->addTab(new QLabel(QStringLiteral("乙")), QStringLiteral("委托"));
        price->setAccessibleName(QStringLiteral("12.50"));
        price->setMinimumHeight(10);
        FillTable();
        FillTree();
        connect(buy, &QPushButton::clicked, this, [this] { ++bought; });
    }

    bool Show()
    {
        show();
        return QTest::qWaitForWindowActive(this);
    }

    QLabel* const label = new QLabel(QStringLiteral("<b>可用</b> 1&nbsp;000"));
    QPushButton* const buy = new QPushButton(QStringLiteral("买入(&B)"));
    QPushButton* const sell = new QPushButton(QStringLiteral("卖出"));
    QCheckBox* const check = new QCheckBox(QStringLiteral("确认"));
    QLineEdit* const line = new QLineEdit;
    QLineEdit* const password = new QLineEdit;
    QSpinBox* const spin = new QSpinBox;
    QComboBox* const combo = new QComboBox;
    QPlainTextEdit* const notes = new QPlainTextEdit(QStringLiteral("一\n二"));
    QTabWidget* const tabs = new QTabWidget;
    QTableWidget* const table = new QTableWidget(3, 3);
    QTreeWidget* const tree = new QTreeWidget;
    PriceView* const price = new PriceView;
    int bought = 0;

private:
    void FillTable()
    {
        table->setHorizontalHeaderLabels(
            {QStringLiteral("代码"), QStringLiteral("隐藏"), QStringLiteral("名称")});
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                table->setItem(row, column,
                               new QTableWidgetItem(QStringLiteral("%1%2").arg(row).arg(column)));
            }
        }
        table->setColumnHidden(1, true);
        table->setRowHidden(1, true);
        table->horizontalHeader()->moveSection(2, 0);
        table->setMinimumHeight(90);
    }
    void FillTree()
    {
        tree->setHeaderHidden(true);
        for (const char* const name : {"open", "closed"}) {
            auto* const branch = new QTreeWidgetItem(tree, {QLatin1String(name)});
            new QTreeWidgetItem(branch, {QLatin1String(name) + QStringLiteral(" leaf")});
        }
        tree->topLevelItem(0)->setExpanded(true);
        tree->setMinimumHeight(90);
    }
};

}  // namespace

class UiProbeTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        Test::init();
        ExpectWarning(QStringLiteral("This plugin does not support"));
    }

    void BadRequestsGetOneAnswerEach_data()
    {
        const Rows<const char*, const char*> row("request error");
        row("no JSON", "{", "no JSON: ");
        row("an array", "[1]", "no JSON object");
        row("nothing", "", "no JSON: ");
        row("no name", "{'id':7}", "\"request\" is");
        row("an unknown name", "{'request':'shout'}", "\"request\" is");
        row("a key is missing", "{'request':'press'}", "\"press\" needs \"selector\"");
        row("a key of another request", "{'request':'tree','text':'a'}", "\"tree\" has no \"text\"");
        row("a misspelt key", "{'request':'type','selector':'*','text':'','claer':true}", "no \"claer\"");
        row("a number as text", "{'request':'tree','depth':'1'}",
            "\"depth\" is a whole number from 0 to 1000");
        row("a broken number", "{'request':'tree','depth':1.5}", "\"depth\" is");
        row("a number too large", "{'request':'wait','selector':'*','timeout':600001}", "\"timeout\" is");
        row("a place of one number", "{'request':'press','selector':'*','at':[1]}", "\"at\" is [x,y]");
        row("a bad selector", "{'request':'wait','selector':'#'}", "bad selector");
        row("a value of no kind", "{'request':'set','selector':'*','value':[]}", "\"value\" is");
    }
    void BadRequestsGetOneAnswerEach()
    {
        QFETCH(QString, request);
        QFETCH(const QString, error);
        request.replace(QLatin1Char('\''), QLatin1Char('"'));
        Asker ask;
        ask.probe->Take(request.isEmpty() ? nullptr : request.toUtf8().constData());
        QVERIFY(ask.answers.empty());  // never from inside the call
        ask.Send(QStringLiteral("'request':'find','selector':'NoSuchClass','id':[1,'x']"));
        QTRY_COMPARE(ask.answers.size(), 2U);
        QCOMPARE(ask.answers[0][QLatin1String("ok")], QJsonValue(false));
        QVERIFY2(ask.answers[0][QLatin1String("error")].toString().contains(error),
                 qPrintable(ask.answers[0][QLatin1String("error")].toString()));
        QCOMPARE(ask.answers[1][QLatin1String("id")], QJsonValue(QJsonArray{1, QStringLiteral("x")}));
        QCOMPARE(ask.answers[1][QLatin1String("count")], QJsonValue(0));
    }

    void Selectors_data()
    {
        const Rows<const char*, const char*> row("selector found");
        row("a name", "#buy", "buy");
        row("class and name", "QPushButton#buy", "buy");
        row("class of another and name", "QLabel#buy", "");
        row("a class it derives from", "#stage > QAbstractButton", "buy sell check");
        row("any depth", "#tabs QLabel", "乙 甲");
        row("children alone", "#tabs > QLabel", "");
        row("any class", "#tabs > QStackedWidget > *", "乙 甲");
        row("an own class", "PriceView", "price");
        row("text without its mnemonic", "text=买入(B)", "buy");
        row("class and text", "QPushButton[text=卖出]", "sell");
        row("text in quotes", "[text=\"可用 1 000\"]", "label");
        row("number", "#stage > QAbstractButton[1]", "sell");
        row("a number in the middle", "#tabs QLabel[1]", "甲");
        row("a number of the whole path", "#stage *[text=乙][0]", "乙");
        row("behind the last", "#stage > QAbstractButton[9]", "");
        row("no step", " ", "!it is empty");
        row("no step before", "> #buy", "!before");
        row("no step behind", "#buy >", "!after");
        row("open bracket", "#buy[text=a", "!a \"]\" is missing");
        row("open quote", "#'buy", "!quote");
        row("no number", "#buy[first]", "!a number from 0");
        row("negative", "#buy[-1]", "!a number from 0");
        row("rubbish", "QLabel!", "!isn't understood");
    }
    void Selectors()
    {
        QFETCH(const QString, selector);
        QFETCH(const QString, found);
        Stage stage;
        QString problem;
        const auto read = panelry::Selector::Read(selector, problem);
        if (found.startsWith(QLatin1Char('!'))) {
            QVERIFY2(!read && problem.contains(found.mid(1)), qPrintable(problem));
            return;
        }
        QVERIFY2(read, qPrintable(problem));
        QStringList names;
        for (const QWidget* const match : read->Matches(false)) {
            names.append(match->objectName().isEmpty() ? static_cast<const QLabel*>(match)->text()
                                                       : match->objectName());
        }
        QCOMPARE(names.join(QLatin1Char(' ')), found);
    }

    void WidgetsAreReadAsTheyAreShown_data()
    {
        const Rows<const char*> row("parts");
        row("stage", "{'text':'模拟窗口','window':true,'visible':true}");
        row("label", "{'text':'可用 1 000','class':'QLabel','enabled':true}");
        row("buy", "{'text':'买入(B)','on_screen':true,'focus':false}");
        row("check", "{'text':'确认','value':true}");
        row("line", "{'text':'600519','value':'600519','focus':true}");
        row("password", "{'text':'●●●●●●','value':'●●●●●●'}");
        row("spin", "{'text':'300 股','value':300,'details':{'minimum':100,'maximum':900,'readOnly':false}}");
        row("combo", "{'text':'市价','details':{'editable':false,'index':1,'items':['限价','市价']}}");
        row("notes", "{'text':'一\\n二'}");
        row("tabs", "{'value':1,'details':{'tabs':['持仓(H)','委托']}}");
        row("table",
            "{'details':{'headings':['名称','代码'],'rows':[['02','00'],['22','20']],'depths':[0,0],"
            "'first_row':0,'model_rows':3,'current':[1,1],'selected_rows':[1]}}");
        row("tree",
            "{'details':{'headings':[''],'rows':[['open'],['open leaf'],['closed']],'depths':[0,1,0],"
            "'first_row':0,'model_rows':2,'current':null,'selected_rows':[]}}");
        row("price", "{'text':'12.50','properties':{'price':12.5,'stock':'演示股份','note':'n'}}");
    }
    void WidgetsAreReadAsTheyAreShown()
    {
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        QFETCH(const QString, parts);
        Stage stage;
        stage.check->setChecked(true);
        stage.line->setText(QStringLiteral("600519"));
        stage.spin->setValue(300);
        stage.combo->setCurrentIndex(1);
        stage.tabs->setCurrentIndex(1);
        stage.table->setCurrentCell(2, 0);
        stage.price->setProperty("note", QStringLiteral("n"));
        stage.line->setFocus();
        QVERIFY(stage.Show());
        Asker ask;
        const QJsonArray found =
            ask(QStringLiteral("'request':'find','selector':'#%1'").arg(name))[QLatin1String("widgets")]
                .toArray();
        QCOMPARE(found.size(), 1);
        const QJsonObject wanted = Json(parts);
        for (auto part = wanted.begin(); part != wanted.end(); ++part) {
            QCOMPARE(found[0].toObject()[part.key()], part.value());
        }
        const auto* const widget = name == QLatin1String("stage") ? &stage : stage.findChild<QWidget*>(name);
        const QPoint corner = widget->mapToGlobal({});
        QCOMPARE(found[0].toObject()[QLatin1String("global")],
                 QJsonValue(QJsonArray{corner.x(), corner.y(), widget->width(), widget->height()}));
    }

    void PressesLandAsAUsers_data()
    {
        const Rows<const char*, const char*> row("request outcome");
        row("a button", "'selector':'#buy'", "1 false 0 -1,-1 -");
        row("a check box far wider than its mark", "'selector':'#check'", "0 true 0 -1,-1 -");
        row("a tab by text", "'selector':'#tabs','tab':'委托'", "0 false 1 -1,-1 -");
        row("a tab by number", "'selector':'#tabs','tab':1", "0 false 1 -1,-1 -");
        row("a cell in the order shown", "'selector':'#table','row':1,'column':0", "0 false 0 2,2 -");
        row("a row of a tree", "'selector':'#tree','row':1", "0 false 0 -1,-1 open leaf");
        row("a place where nothing is", "'selector':'#stage','at':[0,0]", "0 false 0 -1,-1 -");
    }
    void PressesLandAsAUsers()
    {
        QFETCH(const QString, request);
        QFETCH(const QString, outcome);
        Stage stage;
        stage.resize(800, 900);
        QVERIFY(stage.Show());
        Asker ask;
        QVERIFY(ask.Ok(QStringLiteral("'request':'press',") + request));
        const auto* const item = stage.tree->currentItem();
        const QString seen = QStringLiteral("%1 %2 %3 %4,%5 %6")
                                 .arg(stage.bought)
                                 .arg(QVariant(stage.check->isChecked()).toString())
                                 .arg(stage.tabs->currentIndex())
                                 .arg(stage.table->currentRow())
                                 .arg(stage.table->currentColumn())
                                 .arg(item ? item->text(0) : QStringLiteral("-"));
        QCOMPARE(seen, outcome);
    }

    void ADoubleClickIsAskedFor()
    {
        Stage stage;
        QVERIFY(stage.Show());
        QStringList seen;
        connect(stage.table, &QTableWidget::cellClicked, this, [&] { seen += QStringLiteral("click"); });
        connect(stage.table, &QTableWidget::cellDoubleClicked, this,
                [&] { seen += QStringLiteral("double"); });
        stage.table->setEditTriggers(QAbstractItemView::NoEditTriggers);
        Asker ask;
        const QString press = QStringLiteral("'request':'press','selector':'#table','row':0");
        QVERIFY(ask.Ok(press) && ask.Ok(press));
        QCOMPARE(seen, QStringList({QStringLiteral("click"), QStringLiteral("click")}));
        QVERIFY(ask.Ok(press + QStringLiteral(",'double':true")));
        QCOMPARE(seen.count(QStringLiteral("double")), 1);
    }

    void KeysArriveAsAUsers_data()
    {
        const Rows<const char*, const char*, const char*> row("request name text");
        row("behind what stands there", "'request':'type','selector':'#line','text':'5x'", "line", "ab5x");
        row("in its place", "'request':'type','selector':'#line','clear':true,'text':'Qx 演示'", "line",
            "Qx 演示");
        row("cleared alone", "'request':'type','selector':'#line','clear':true,'text':''", "line", "");
        row("more than fits", "'request':'type','selector':'#line','text':'1234567'", "line", "ab123456");
        row("a number", "'request':'type','selector':'#spin','clear':true,'text':'450'", "spin", "450 股");
        row("two lines", "'request':'type','selector':'#notes','clear':true,'text':'a\\n𠮷'", "notes",
            "a\n𠮷");
        row("a key alone", "'request':'key','selector':'#line','key':'Backspace'", "line", "a");
        row("a letter with shift", "'request':'key','selector':'#line','key':'Shift+C'", "line", "abC");
        row("a step of the spin box", "'request':'key','selector':'#spin','key':'Up'", "spin", "101 股");
        row("several keys", "'request':'key','selector':'#line','key':'Home, Delete'", "line", "b");
        row("a shortcut", "'request':'key','selector':'#line','key':'Ctrl+K'", "label", "shortcut");
        row("a mnemonic", "'request':'key','selector':'#line','key':'Alt+B'", "label", "bought");
    }
    void KeysArriveAsAUsers()
    {
        QFETCH(const QString, request);
        QFETCH(const QString, name);
        QFETCH(const QString, text);
        Stage stage;
        stage.line->setText(QStringLiteral("ab"));
        const QShortcut shortcut(QKeySequence(QStringLiteral("Ctrl+K")), &stage);
        const auto say = [&stage](const char* word) { stage.label->setText(QLatin1String(word)); };
        connect(&shortcut, &QShortcut::activated, stage.label, [&] { say("shortcut"); });
        connect(stage.buy, &QPushButton::clicked, stage.label, [&] { say("bought"); });
        QVERIFY(stage.Show());
        Asker ask;
        QVERIFY(ask.Ok(request));
        QTRY_COMPARE(panelry::ShownText(*stage.findChild<QWidget*>(name)), text);
    }

    void ValuesAreSet_data()
    {
        const Rows<const char*, const char*, const char*> row("name value outcome");
        row("checked", "check", "true", "true");
        row("checked by a number", "check", "1", "!bool");
        row("a plain button", "buy", "true", "!can't be checked");
        row("an item by text", "combo", "'市价'", "'市价'");
        row("an item by number", "combo", "1", "'市价'");
        row("no such text", "combo", "'止损'", "!no such item");
        row("no such number", "combo", "2", "!no such item");
        row("a tab", "tabs", "'委托'", "1");
        row("a number", "spin", "450", "450");
        row("a number out of range", "spin", "1000", "!has taken \"900\"");
        row("a broken number", "spin", "450.5", "!of the type int");
        row("a text", "line", "'600519'", "'600519'");
        row("emptied, under a name for screen readers", "line", "''", "''");
        row("a text too long", "line", "'600519.SH'", "!has taken");
        row("nothing to set", "label", "'x'", "!no value to set");
        row("disabled", "sell", "true", "!is disabled");
    }
    void ValuesAreSet()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, value);
        QFETCH(const QString, outcome);
        Stage stage;
        stage.sell->setEnabled(false);
        stage.line->setAccessibleName(QStringLiteral("代码"));
        Asker ask;
        const QString request =
            QStringLiteral("'request':'set','selector':'#%1','value':%2").arg(name, value);
        if (outcome.startsWith(QLatin1Char('!'))) {
            const QString error = ask.Error(request);
            QVERIFY2(error.contains(outcome.mid(1)), qPrintable(error));
            return;
        }
        const QJsonObject wanted = Json(QStringLiteral("{'value':%1}").arg(outcome));
        QCOMPARE(ask(request)[QLatin1String("value")], wanted[QLatin1String("value")]);
    }

    void WhatAUserCannotReachIsRefused_data()
    {
        const Rows<const char*, const char*> row("request error");
        row("nothing", "'selector':'#no'", "nothing matches #no");
        row("several", "'selector':'#stage > QPushButton'",
            "2 widgets match #stage > QPushButton: QPushButton#buy, QPushButton#sell");
        row("disabled", "'selector':'#sell'", "QPushButton#sell is disabled");
        row("hidden", "'selector':'#combo'", "QComboBox#combo is hidden");
        row("hidden behind a tab", "'selector':'[text=乙]'", "is hidden");
        row("not among what can be seen", "'selector':'#combo','visible':true", "nothing matches");
        row("covered", "'selector':'#buy'", "QPushButton#buy is covered by QLabel#cover");
        row("cut off", "'selector':'#far'", "QPushButton#far is cut off");
        row("outside", "'selector':'#check','at':[5000,1]", "can't be seen");
        row("a hidden column", "'selector':'#table','row':0,'column':2", "no cell in row 0, column 2");
        row("a row too far", "'selector':'#table','row':2", "no cell in row 2");
        row("a disabled cell", "'selector':'#table','row':1,'column':1", "is disabled");
        row("rows of no table", "'selector':'#check','row':0", "has no rows");
        row("no such tab", "'selector':'#tabs','tab':'资金'", "no such tab");
        row("a disabled tab", "'selector':'#tabs','tab':1", "that tab is disabled");
        row("entry of no menu", "'selector':'#check','entry':0", "is no menu");
        row("no button of a mouse", "'selector':'#check','button':'fourth'", "\"button\" is");
        row("no modifier", "'selector':'#check','modifiers':'Hyper'", "\"modifiers\" are");
    }
    void WhatAUserCannotReachIsRefused()
    {
        QFETCH(const QString, request);
        QFETCH(const QString, error);
        Stage stage;
        stage.sell->setEnabled(false);
        stage.combo->hide();
        stage.tabs->setTabEnabled(1, false);
        stage.table->item(2, 0)->setFlags(Qt::NoItemFlags);
        auto* const area = new QScrollArea(&stage);
        auto* const wide = new QWidget;
        auto* const far = new QPushButton(wide);
        far->setObjectName(QStringLiteral("far"));
        far->move(5000, 0);
        wide->resize(6000, 20);
        area->setWidget(wide);
        area->setFixedHeight(30);
        stage.layout()->addWidget(area);
        QVERIFY(stage.Show());
        QLabel cover(&stage);
        cover.setObjectName(QStringLiteral("cover"));
        cover.setGeometry(stage.buy->geometry());
        cover.show();
        Asker ask;
        const QString told = ask.Error(QStringLiteral("'request':'press',") + request);
        QVERIFY2(told.contains(error), qPrintable(told));
        QCOMPARE(stage.bought, 0);
        QCOMPARE(ask.Error(QStringLiteral("'request':'type','text':'1','selector':'#sell'")),
                 QStringLiteral("QPushButton#sell is disabled"));
        QVERIFY(ask.Error(QStringLiteral("'request':'key','selector':'#line','key':'Foo+Bar'"))
                    .contains(QStringLiteral("is no key")));
    }

    // exec() holds the press up until the dialog closes: the answer comes, and the dialog can be driven.
    void ADialogOfItsOwnLoopIsDriven()
    {
        Stage stage;
        int result = -1;
        connect(stage.buy, &QPushButton::clicked, this, [&] {
            QDialog dialog(&stage);
            dialog.setObjectName(QStringLiteral("dialog"));
            QPushButton yes(QStringLiteral("确定"), &dialog);
            connect(&yes, &QPushButton::clicked, &dialog, &QDialog::accept);
            result = dialog.exec();
        });
        QVERIFY(stage.Show());
        Asker ask;
        ask.Send(QStringLiteral("'request':'press','selector':'#buy','id':'open'"));
        ask.Send(QStringLiteral("'request':'wait','selector':'#dialog','visible':true,'id':'shown'"));
        ask.Send(QStringLiteral("'request':'press','selector':'#sell','id':'blocked'"));
        ask.Send(QStringLiteral("'request':'press','selector':'#dialog [text=确定]','id':'yes'"));
        QTRY_COMPARE(ask.answers.size(), 4U);
        QTRY_COMPARE(result, int(QDialog::Accepted));
        QMap<QString, QJsonObject> byId;
        for (const QJsonObject& answer : ask.answers) {
            byId[answer[QLatin1String("id")].toString()] = answer;
        }
        const QJsonObject open = byId[QStringLiteral("open")];
        QCOMPARE(open[QLatin1String("nested")], QJsonValue(true));
        QCOMPARE(open[QLatin1String("in_front")], QJsonValue(QStringLiteral("QDialog#dialog")));
        QCOMPARE(byId[QStringLiteral("blocked")][QLatin1String("error")].toString(),
                 QStringLiteral("QPushButton#sell is blocked by the modal QDialog#dialog"));
        QCOMPARE(byId[QStringLiteral("yes")][QLatin1String("ok")], QJsonValue(true));
        QVERIFY(ask.Ok(QStringLiteral("'request':'wait','selector':'#dialog','gone':true")));
    }

    void MenusAndListsThatPopUpAreDriven()
    {
        Stage stage;
        QMenu menu;
        menu.setObjectName(QStringLiteral("menu"));
        QAction* const chosen = menu.addAction(QStringLiteral("撤单(&C)\tF8"));
        menu.addAction(QStringLiteral("改单"))->setEnabled(false);
        int triggered = 0;
        connect(chosen, &QAction::triggered, this, [&] { ++triggered; });
        stage.table->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(stage.table, &QWidget::customContextMenuRequested, &menu,
                [&](const QPoint& at) { menu.exec(stage.table->viewport()->mapToGlobal(at)); });
        QVERIFY(stage.Show());
        Asker ask;
        // The request goes on in the menu's loop, from where it started: all of it has to stand in one queue.
        ask.Send(QStringLiteral("'request':'press','selector':'#table','row':0,'button':'right'"));
        ask.Send(QStringLiteral("'request':'press','selector':'#check'"));
        ask.Send(QStringLiteral("'request':'press','selector':'#menu','entry':1"));
        ask.Send(QStringLiteral("'request':'press','selector':'#menu','entry':'撤单(C)'"));
        QTRY_COMPARE(triggered, 1);
        QTRY_COMPARE(ask.answers.size(), 4U);
        QCOMPARE(ask.answers[0][QLatin1String("nested")], QJsonValue(true));
        QVERIFY(ask.answers[1][QLatin1String("error")].toString().contains(
            QStringLiteral("blocked by the popup QMenu#menu")));
        QCOMPARE(ask.answers[2][QLatin1String("error")].toString(), QStringLiteral("that entry is disabled"));
        QVERIFY(ask.Ok(QStringLiteral("'request':'press','selector':'#combo'")));
        QVERIFY(ask.Ok(QStringLiteral("'request':'key','key':'Down'")));
        QVERIFY(ask.Ok(QStringLiteral("'request':'key','key':'Return'")));
        QTRY_COMPARE(stage.combo->currentText(), QStringLiteral("市价"));
    }

    void WhatAPressDestroysIsNoMatter()
    {
        auto stage = std::make_unique<QWidget>();
        auto* const button = new QPushButton(stage.get());
        button->setObjectName(QStringLiteral("last"));
        connect(button, &QPushButton::pressed, this, [&] { stage.reset(); });
        stage->show();
        QVERIFY(QTest::qWaitForWindowActive(stage.get()));
        Asker ask;
        const QJsonObject answer = ask(QStringLiteral("'request':'press','selector':'#last','double':true"));
        QCOMPARE(answer[QLatin1String("destroyed")], QJsonValue(true));
        QVERIFY(!stage);
    }

    void AProbeThatItsOwnPressDestroysIsSilent()
    {
        Stage stage;
        QVERIFY(stage.Show());
        Asker ask;
        bool waited = false;
        connect(stage.buy, &QPushButton::clicked, this, [&] {
            ask.probe.reset();
            QTimer::singleShot(50, this, [&] { waited = true; });  // longer than it polls
        });
        ask.Send(QStringLiteral("'request':'wait','selector':'#no','timeout':10"));
        ask.Send(QStringLiteral("'request':'press','selector':'#buy'"));
        ask.Send(QStringLiteral("'request':'find','selector':'#buy'"));
        QTRY_VERIFY(waited);
        QCOMPARE(stage.bought, 1);
        QVERIFY(ask.answers.empty());
    }

    void AWaitEndsWhenItHolds_data()
    {
        const Rows<const char*, const char*> row("request before");
        row("there", "'selector':'#late'", "nothing matches #late");
        row("to be seen", "'selector':'#combo','visible':true", "nothing matches #combo");
        row("gone from sight", "'selector':'#check','visible':true,'gone':true",
            "still is a match of #check");
        row("enabled", "'selector':'#sell','enabled':true", "QPushButton#sell is disabled");
        row("the keyboard", "'selector':'#line','focus':true", "QLineEdit#line hasn't the keyboard");
        row("a text", "'selector':'#line','text':'已报'", "QLineEdit#line shows \"\"");
        row("a value", "'selector':'#spin','value':300", "QSpinBox#spin has the value 100");
        row("part of a cell", "'selector':'#table','contains':'成交'", "doesn't show \"成交\"");
        row("one of several", "'selector':'#stage > QPushButton','visible':true", "2 widgets match");
    }
    void AWaitEndsWhenItHolds()
    {
        QFETCH(const QString, request);
        QFETCH(const QString, before);
        Stage stage;
        stage.combo->hide();
        stage.sell->setEnabled(false);
        stage.notes->setFocus();
        QVERIFY(stage.Show());
        Asker ask;
        const QString wait = QStringLiteral("'request':'wait',") + request;
        const QString error = ask.Error(wait + QStringLiteral(",'timeout':0"));
        QVERIFY2(error.startsWith(QStringLiteral("timed out after ")) && error.contains(before),
                 qPrintable(error));
        ask.Send(wait);
        QVERIFY(ask.Ok(QStringLiteral("'request':'find','selector':'#buy'")));  // isn't held up
        QCOMPARE(ask.answers.size(), 2U);
        QLabel late(&stage);
        late.setObjectName(QStringLiteral("late"));
        stage.combo->show();
        stage.check->hide();
        stage.sell->setEnabled(true);
        stage.line->setFocus();
        stage.line->setText(QStringLiteral("已报"));
        stage.spin->setValue(300);
        stage.table->item(2, 2)->setText(QStringLiteral("部分成交"));
        stage.buy->hide();
        QTRY_COMPARE(ask.answers.size(), 3U);
        QCOMPARE(ask.answers[2][QLatin1String("ok")], QJsonValue(true));
        QCOMPARE(ask.answers[2].contains(QLatin1String("widget")), !request.contains(QStringLiteral("gone")));
    }

    void TreesAreBounded()
    {
        Stage stage;
        QWidget crowd;
        crowd.setObjectName(QStringLiteral("crowd"));
        for (int i = 0; i < 2'500; ++i) {
            new QWidget(&crowd);
        }
        Asker ask;
        const auto tree = [&ask](const char* keys) {
            return ask(QStringLiteral("'request':'tree','root':%1").arg(QLatin1String(keys)));
        };
        const auto root = [](const QJsonObject& answer, const char* key) -> QJsonValue {
            return answer.value(QLatin1String("widgets"))
                .toArray()
                .at(0)
                .toObject()
                .value(QLatin1String(key));
        };
        const QJsonObject whole = tree("'#crowd'");
        QCOMPARE(whole[QLatin1String("truncated")], QJsonValue(true));
        QCOMPARE(root(whole, "children").toArray().size(), 1'999);
        const QJsonObject flat = tree("'#crowd','depth':0");
        QVERIFY(!flat.contains(QLatin1String("truncated")));
        QCOMPARE(root(flat, "children_left_out"), QJsonValue(2'500));
        QCOMPARE(tree("'#stage','visible':true")[QLatin1String("error")].toString(),
                 QStringLiteral("nothing matches #stage"));
        const auto rows = [&](const char* keys) {
            return root(tree(keys), "details").toObject()[QLatin1String("rows")].toArray();
        };
        QCOMPARE(rows("'#table','rows':1"),
                 (QJsonArray{QJsonArray{QStringLiteral("02"), QStringLiteral("00")}}));
        QCOMPARE(rows("'#table','first_row':1"),
                 (QJsonArray{QJsonArray{QStringLiteral("22"), QStringLiteral("20")}}));
        QCOMPARE(tree("'#table','rows':1")[QLatin1String("truncated")], QJsonValue(true));
    }

    void TheModuleAnswersTheHost()
    {
        struct Host : RecordingManager {
            void SendModuleMessage(int msgId, void* payload, ModuleBase* sender, int target) override
            {
                RecordingManager::SendModuleMessage(msgId, payload, sender, target);
                texts.append(QByteArray(static_cast<const char*>(payload)));
            }
            QByteArrayList texts;
        } host;
        InstanceInfo info;
        info.module_title = "UI 探针";
        auto module = std::make_shared<panelry::UiProbeModule>(info);
        module->m_manager = &host;
        module->Initialize(41009, "", "", "{}");
        const auto send = [&module](int msgId, const char* request) {
            Send(*module, msgId, QByteArray(request).replace('\'', '"').constData());
        };
        QWidget* const widget = module->GetWidget();
        widget->show();
        send(9099, "{'request':'tree'}");  // another's message
        send(9100, "{'request':'find','selector':'#ui_probe #requests','id':'标'}");
        send(9100, "{'request':'press','selector':'#ui_probe #no','id':2}");
        QVERIFY(host.texts.isEmpty());
        QTRY_COMPARE(host.texts.size(), 2);
        QCOMPARE(host.sent[0].msgId, 205);
        QCOMPARE(host.sent[0].sender, module.get());
        const QJsonObject found = QJsonDocument::fromJson(host.texts[0]).object();
        QCOMPARE(found[QLatin1String("probe")], QJsonValue(1));
        QCOMPARE(found[QLatin1String("id")], QJsonValue(QStringLiteral("标")));
        QCOMPARE(found[QLatin1String("count")], QJsonValue(1));
        const auto* const list = widget->findChild<QTreeWidget*>();
        QCOMPARE(list->topLevelItemCount(), 2);
        QVERIFY(list->topLevelItem(1)->text(3).contains(QStringLiteral("nothing matches")));

        delete widget;  // as the library does with a panel without a frame
        send(9100, "{'request':'find','selector':'*'}");
        QTRY_COMPARE(host.texts.size(), 3);
        send(9100, "{'request':'find','selector':'*'}");
        module.reset();
        QCoreApplication::processEvents();
        QCOMPARE(host.texts.size(), 3);
    }
};

PANELRY_TEST(UiProbeTest)
#include "ui_probe_test.moc"
