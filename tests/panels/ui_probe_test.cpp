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
#include "support/literals.h"
#include "support/rows.h"
#include "support/test.h"
#include "ui_probe/ui_probe_module.h"
#include "ui_probe/widget_values.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

// JSON stands here with single quotes for double ones.
QByteArray Quoted(QString text)
{
    return text.replace(QLatin1Char('\''), QLatin1Char('"')).toUtf8();
}

QJsonObject Json(const QString& text)
{
    return QJsonDocument::fromJson(Quoted(text)).object();
}

/// What the probe says; its parts as JSON, "" where there is none.
struct Answer : QJsonObject {
    QByteArray operator[](const char* part) const
    {
        const QByteArray list =
            QJsonDocument(QJsonArray{value(QLatin1String(part))}).toJson(QJsonDocument::Compact);
        return contains(QLatin1String(part)) ? list.mid(1, list.size() - 2).replace('"', '\'') : "";
    }
    QString Error() const { return value("error"_q).toString("no error"_q); }
};

/// A probe and what it answers.
class Asker
{
public:
    /// The answer to a request that stands between the braces.
    Answer operator()(const QString& request)
    {
        const std::size_t before = answers.size();
        Send(request);
        return QTest::qWaitFor([&] { return answers.size() > before; }) ? answers.back() : Answer();
    }
    void Send(const QString& request) { probe->Take(Quoted("{%1}"_q.arg(request)).constData()); }
    bool Ok(const QString& request)
    {
        const Answer answer = (*this)(request);
        if (answer["ok"] != "true") {
            qInfo() << request << answer;
        }
        return answer["ok"] == "true";
    }

    std::vector<Answer> answers;
    std::unique_ptr<Probe> probe = std::make_unique<Probe>(
        [this](const QByteArray& text) { answers.push_back({QJsonDocument::fromJson(text).object()}); });
};

/// A view that paints its price itself and tells screen readers.
class PriceView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double price MEMBER m_price)
    Q_PROPERTY(QString stock MEMBER m_stock)

private:
    double m_price = 12.5;
    QString m_stock = "演示股份"_q;
};

/// A window with a widget of each kind.
class Stage : public QWidget
{
    Q_OBJECT

public:
    Stage()
    {
        setObjectName("stage"_q);
        setWindowTitle("模拟窗口"_q);
        line->setMaxLength(8);
        password->setEchoMode(QLineEdit::Password);
        password->setText("secret"_q);
        spin->setRange(100, 900);
        spin->setSuffix(" 股"_q);
        combo->addItems({"限价"_q, "市价"_q});
        tabs->addTab(new QLabel("甲"_q), "持仓(&H)"_q);
        tabs->addTab(new QLabel("乙"_q), "委托"_q);
        price->setAccessibleName("12.50"_q);
        price->setMinimumHeight(10);
        for (int cell = 0; cell < 9; ++cell) {
            table->setItem(cell / 3, cell % 3, new QTableWidgetItem("%1%2"_q.arg(cell / 3).arg(cell % 3)));
        }
        table->setHorizontalHeaderLabels({"代码"_q, "隐藏"_q, "名称"_q});
        table->setColumnHidden(1, true);
        table->setRowHidden(1, true);
        table->horizontalHeader()->moveSection(2, 0);
        table->setMinimumHeight(90);
        for (const char* const name : {"open", "closed"}) {
            auto* const branch = new QTreeWidgetItem(tree, {QLatin1String(name)});
            new QTreeWidgetItem(branch, {QLatin1String(name) + " leaf"_q});
        }
        tree->setHeaderHidden(true);
        tree->topLevelItem(0)->setExpanded(true);
        tree->setMinimumHeight(90);
        connect(buy, &QPushButton::clicked, this, [this] { ++bought; });
    }

    bool Show()
    {
        show();
        return QTest::qWaitForWindowActive(this);
    }

    QLabel* const label = Add("label", new QLabel("<b>可用</b> 1&nbsp;000"_q));
    QPushButton* const buy = Add("buy", new QPushButton("买入(&B)"_q));
    QPushButton* const sell = Add("sell", new QPushButton("卖出"_q));
    QCheckBox* const check = Add("check", new QCheckBox("确认"_q));
    QLineEdit* const line = Add("line", new QLineEdit);
    QLineEdit* const password = Add("password", new QLineEdit);
    QSpinBox* const spin = Add("spin", new QSpinBox);
    QComboBox* const combo = Add("combo", new QComboBox);
    QPlainTextEdit* const notes = Add("notes", new QPlainTextEdit("一\n二"_q));
    QTabWidget* const tabs = Add("tabs", new QTabWidget);
    QTableWidget* const table = Add("table", new QTableWidget(3, 3));
    QTreeWidget* const tree = Add("tree", new QTreeWidget);
    PriceView* const price = Add("price", new PriceView);
    int bought = 0;

private:
    template <class Widget>
    Widget* Add(const char* name, Widget* widget)
    {
        widget->setObjectName(QLatin1String(name));
        (layout() ? layout() : new QVBoxLayout(this))->addWidget(widget);
        return widget;
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
        ExpectWarning("This plugin does not support"_q);
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
        QFETCH(const QString, request);
        QFETCH(const QString, error);
        Asker ask;
        ask.probe->Take(request.isEmpty() ? nullptr : Quoted(request).constData());
        QVERIFY(ask.answers.empty());  // never from inside the call
        ask.Send("'request':'find','selector':'NoSuchClass','id':[1,'x']"_q);
        QTRY_COMPARE(ask.answers.size(), 2U);
        QCOMPARE(ask.answers[0]["ok"], "false");
        QVERIFY2(ask.answers[0].Error().contains(error), qPrintable(ask.answers[0].Error()));
        QCOMPARE(ask.answers[1]["id"] + ask.answers[1]["count"], "[1,'x']0");
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
        const auto read = Selector::Read(selector, problem);
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
        stage.line->setText("600519"_q);
        stage.spin->setValue(300);
        stage.combo->setCurrentIndex(1);
        stage.tabs->setCurrentIndex(1);
        stage.table->setCurrentCell(2, 0);
        stage.price->setProperty("note", "n"_q);
        stage.line->setFocus();
        QVERIFY(stage.Show());
        Asker ask;
        const QJsonArray found =
            ask("'request':'find','selector':'#%1'"_q.arg(name)).value("widgets"_q).toArray();
        QCOMPARE(found.size(), 1);
        const auto* const widget = name == "stage"_q ? &stage : stage.findChild<QWidget*>(name);
        const QPoint corner = widget->mapToGlobal({});
        QJsonObject wanted = Json(parts);
        wanted["global"_q] = QJsonArray{corner.x(), corner.y(), widget->width(), widget->height()};
        for (auto part = wanted.begin(); part != wanted.end(); ++part) {
            QCOMPARE(found[0].toObject()[part.key()], part.value());
        }
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
        QVERIFY(ask.Ok("'request':'press',"_q + request));
        const auto* const item = stage.tree->currentItem();
        const QString seen = "%1 %2 %3 %4,%5 %6"_q.arg(stage.bought)
                                 .arg(QVariant(stage.check->isChecked()).toString())
                                 .arg(stage.tabs->currentIndex())
                                 .arg(stage.table->currentRow())
                                 .arg(stage.table->currentColumn())
                                 .arg(item ? item->text(0) : "-"_q);
        QCOMPARE(seen, outcome);
    }

    void ADoubleClickIsAskedFor()
    {
        Stage stage;
        QVERIFY(stage.Show());
        QStringList seen;
        connect(stage.table, &QTableWidget::cellClicked, this, [&] { seen += "click"_q; });
        connect(stage.table, &QTableWidget::cellDoubleClicked, this, [&] { seen += "double"_q; });
        stage.table->setEditTriggers(QAbstractItemView::NoEditTriggers);
        Asker ask;
        const QString press = "'request':'press','selector':'#table','row':0"_q;
        QVERIFY(ask.Ok(press) && ask.Ok(press));
        QCOMPARE(seen, QStringList({"click"_q, "click"_q}));
        QVERIFY(ask.Ok(press + ",'double':true"_q));
        QCOMPARE(seen.count("double"_q), 1);
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
        stage.line->setText("ab"_q);
        const QShortcut shortcut(QKeySequence("Ctrl+K"_q), &stage);
        const auto say = [&stage](const char* word) { stage.label->setText(QLatin1String(word)); };
        connect(&shortcut, &QShortcut::activated, stage.label, [&] { say("shortcut"); });
        connect(stage.buy, &QPushButton::clicked, stage.label, [&] { say("bought"); });
        QVERIFY(stage.Show());
        Asker ask;
        QVERIFY(ask.Ok(request));
        QTRY_COMPARE(ShownText(*stage.findChild<QWidget*>(name)), text);
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
        stage.line->setAccessibleName("代码"_q);
        Asker ask;
        const Answer answer = ask("'request':'set','selector':'#%1','value':%2"_q.arg(name, value));
        if (outcome.startsWith(QLatin1Char('!'))) {
            QVERIFY2(answer.Error().contains(outcome.mid(1)), qPrintable(answer.Error()));
        } else {
            QCOMPARE(QString::fromUtf8(answer["value"]), outcome);
        }
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
        far->setObjectName("far"_q);
        far->move(5000, 0);
        wide->resize(6000, 20);
        area->setWidget(wide);
        area->setFixedHeight(30);
        stage.layout()->addWidget(area);
        QVERIFY(stage.Show());
        QLabel cover(&stage);
        cover.setObjectName("cover"_q);
        cover.setGeometry(stage.buy->geometry());
        cover.show();
        Asker ask;
        const QString told = ask("'request':'press',"_q + request).Error();
        QVERIFY2(told.contains(error), qPrintable(told));
        QCOMPARE(stage.bought, 0);
        QCOMPARE(ask("'request':'type','text':'1','selector':'#sell'"_q).Error(),
                 "QPushButton#sell is disabled"_q);
        QVERIFY(ask("'request':'key','selector':'#line','key':'Foo+Bar'"_q).Error().contains("is no key"_q));
    }

    // exec() holds the press up until the dialog closes: the answer comes, and the dialog can be driven.
    void ADialogOfItsOwnLoopIsDriven()
    {
        Stage stage;
        int result = -1;
        connect(stage.buy, &QPushButton::clicked, this, [&] {
            QDialog dialog(&stage);
            dialog.setObjectName("dialog"_q);
            QPushButton yes("确定"_q, &dialog);
            connect(&yes, &QPushButton::clicked, &dialog, &QDialog::accept);
            result = dialog.exec();
        });
        QVERIFY(stage.Show());
        Asker ask;
        ask.Send("'request':'press','selector':'#buy','id':'open'"_q);
        ask.Send("'request':'wait','selector':'#dialog','visible':true,'id':'shown'"_q);
        ask.Send("'request':'press','selector':'#sell','id':'blocked'"_q);
        ask.Send("'request':'press','selector':'#dialog [text=确定]','id':'yes'"_q);
        QTRY_COMPARE(ask.answers.size(), 4U);
        QTRY_COMPARE(result, int(QDialog::Accepted));
        std::map<QByteArray, Answer> byId;
        for (const Answer& answer : ask.answers) {
            byId[answer["id"]] = answer;
        }
        QCOMPARE(byId["'open'"]["nested"] + byId["'open'"]["in_front"], "true'QDialog#dialog'");
        QCOMPARE(byId["'blocked'"].Error(), "QPushButton#sell is blocked by the modal QDialog#dialog"_q);
        QCOMPARE(byId["'yes'"]["ok"], "true");
        QVERIFY(ask.Ok("'request':'wait','selector':'#dialog','gone':true"_q));
    }

    void MenusAndListsThatPopUpAreDriven()
    {
        Stage stage;
        QMenu menu;
        menu.setObjectName("menu"_q);
        QAction* const chosen = menu.addAction("撤单(&C)\tF8"_q);
        menu.addAction("改单"_q)->setEnabled(false);
        int triggered = 0;
        connect(chosen, &QAction::triggered, this, [&] { ++triggered; });
        stage.table->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(stage.table, &QWidget::customContextMenuRequested, &menu,
                [&](const QPoint& at) { menu.exec(stage.table->viewport()->mapToGlobal(at)); });
        QVERIFY(stage.Show());
        Asker ask;
        // The request goes on in the menu's loop, from where it started: all of it has to stand in one queue.
        ask.Send("'request':'press','selector':'#table','row':0,'button':'right'"_q);
        ask.Send("'request':'press','selector':'#check'"_q);
        ask.Send("'request':'press','selector':'#menu','entry':1"_q);
        ask.Send("'request':'press','selector':'#menu','entry':'撤单(C)'"_q);
        QTRY_COMPARE(triggered, 1);
        QTRY_COMPARE(ask.answers.size(), 4U);
        QCOMPARE(ask.answers[0]["nested"], "true");
        QVERIFY(ask.answers[1].Error().contains("blocked by the popup QMenu#menu"_q));
        QCOMPARE(ask.answers[2].Error(), "that entry is disabled"_q);
        QVERIFY(ask.Ok("'request':'press','selector':'#combo'"_q));
        QVERIFY(ask.Ok("'request':'key','key':'Down'"_q));
        QVERIFY(ask.Ok("'request':'key','key':'Return'"_q));
        QTRY_COMPARE(stage.combo->currentText(), "市价"_q);
    }

    void WhatAPressDestroysIsNoMatter()
    {
        auto stage = std::make_unique<QWidget>();
        auto* const button = new QPushButton(stage.get());
        button->setObjectName("last"_q);
        connect(button, &QPushButton::pressed, this, [&] { stage.reset(); });
        stage->show();
        QVERIFY(QTest::qWaitForWindowActive(stage.get()));
        Asker ask;
        QCOMPARE(ask("'request':'press','selector':'#last','double':true"_q)["destroyed"], "true");
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
        ask.Send("'request':'wait','selector':'#no','timeout':10"_q);
        ask.Send("'request':'press','selector':'#buy'"_q);
        ask.Send("'request':'find','selector':'#buy'"_q);
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
        const QString wait = "'request':'wait',"_q + request;
        const QString error = ask(wait + ",'timeout':0"_q).Error();
        QVERIFY2(error.startsWith("timed out after "_q) && error.contains(before), qPrintable(error));
        ask.Send(wait);
        QVERIFY(ask.Ok("'request':'find','selector':'#buy'"_q));  // isn't held up
        QCOMPARE(ask.answers.size(), 2U);
        QLabel late(&stage);
        late.setObjectName("late"_q);
        stage.combo->show();
        stage.check->hide();
        stage.sell->setEnabled(true);
        stage.line->setFocus();
        stage.line->setText("已报"_q);
        stage.spin->setValue(300);
        stage.table->item(2, 2)->setText("部分成交"_q);
        stage.buy->hide();
        QTRY_COMPARE(ask.answers.size(), 3U);
        QCOMPARE(ask.answers[2]["ok"], "true");
        QCOMPARE(ask.answers[2].contains("widget"_q), !request.contains("gone"_q));
    }

    void TreesAreBounded()
    {
        Stage stage;
        QWidget crowd;
        crowd.setObjectName("crowd"_q);
        for (int i = 0; i < 2'500; ++i) {
            new QWidget(&crowd);
        }
        Asker ask;
        const auto tree = [&ask](const char* keys) {
            return ask("'request':'tree','root':%1"_q.arg(QLatin1String(keys)));
        };
        const auto root = [](const Answer& answer) {
            return Answer{answer.value("widgets"_q).toArray().at(0).toObject()};
        };
        const Answer whole = tree("'#crowd'");
        QCOMPARE(whole["truncated"], "true");
        QCOMPARE(root(whole).value("children"_q).toArray().size(), 1'999);
        const Answer flat = tree("'#crowd','depth':0");
        QCOMPARE(flat["truncated"] + root(flat)["children_left_out"], "2500");
        QCOMPARE(tree("'#stage','visible':true").Error(), "nothing matches #stage"_q);
        QVERIFY(root(tree("'#table','rows':1"))["details"].contains("'rows':[['02','00']]"));
        QVERIFY(root(tree("'#table','first_row':1"))["details"].contains("'rows':[['22','20']]"));
        QCOMPARE(tree("'#table','rows':1")["truncated"], "true");
    }

    void TheModuleAnswersTheHost()
    {
        RecordingManager host;
        InstanceInfo info;
        info.module_title = "UI 探针";
        auto module = std::make_shared<UiProbeModule>(info);
        module->m_manager = &host;
        module->Initialize(41009, "", "", "{}");
        const auto send = [&module](int msgId, const char* request) {
            Send(*module, msgId, Quoted(QString::fromUtf8(request)).constData());
        };
        QWidget* const widget = module->GetWidget();
        widget->show();
        send(9099, "{'request':'tree'}");  // another's message
        send(9100, "{'request':'find','selector':'#ui_probe #requests','id':'标'}");
        send(9100, "{'request':'press','selector':'#ui_probe #no','id':2}");
        QVERIFY(host.sent.empty());
        QTRY_COMPARE(host.sent.size(), 2U);
        QCOMPARE(host.sent[0].msgId, 205);
        QCOMPARE(host.sent[0].sender, module.get());
        const Answer found{QJsonDocument::fromJson(host.sent[0].text).object()};
        QCOMPARE(found["probe"] + found["id"] + found["count"], "1'标'1");
        const auto* const list = widget->findChild<QTreeWidget*>();
        QCOMPARE(list->topLevelItemCount(), 2);
        QVERIFY(list->topLevelItem(1)->text(3).contains("nothing matches"_q));

        delete widget;  // as the library does with a panel without a frame
        send(9100, "{'request':'find','selector':'*'}");
        QTRY_COMPARE(host.sent.size(), 3U);
        send(9100, "{'request':'find','selector':'*'}");
        module.reset();
        QCoreApplication::processEvents();
        QCOMPARE(host.sent.size(), 3U);
    }
};

PANELRY_TEST(UiProbeTest)
#include "ui_probe_test.moc"
