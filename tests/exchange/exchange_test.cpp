#include "desk/exchange/exchange.h"

#include "exchange/stage.h"
#include "support/rows.h"
#include "support/test.h"

using panelry::desk::test::Stage;
using panelry::test::Rows;

class ExchangeTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Tells_data();
    void Tells();
};

void ExchangeTest::Tells_data()
{
    const Rows<const char*, const char*> row("steps told");

    row("the better price goes first, then the earlier order",
        "09:31; sell 10.02 200; sell 10.01 200; sell 10.01 300; buy 10.02 600; book",
        "4: 10.01x200; 2: 10.01x200; 4: 10.01x300; 3: 10.01x300; 4: 10.02x100; 1: 10.02x100; | 10.02x100");
    row("a sell takes the highest bid at the bid's price",
        "09:31; buy 9.99 200; buy 10.01; sell 9.99 200; book",
        "2: 10.01x100; 3: 10.01x100; 1: 9.99x100; 3: 9.99x100; 9.99x100 |");
    row("what isn't dealt stands, and is dealt in its turn",
        "09:31; sell; buy 10.00 300; buy; book; sell 10.00 300; book",
        "2: 10.00x100; 1: 10.00x100; 10.00x300 |; 2: 10.00x200; 4: 10.00x200; 3: 10.00x100; 4: 10.00x100; |");
    row("five levels and no more",
        "09:31; buy 9.99; buy 9.98; buy 9.97; buy 9.96; buy 9.95; buy 9.94; buy 9.97 200; book",
        "9.99x100 9.98x100 9.97x300 9.96x100 9.95x100 |");
    row("open, high, low, last, volume and turnover",
        "09:31; buy; sell; buy 10.05 200; sell 10.05 200; buy 9.97 300; sell 9.97 300; day",
        "1: 10.00x100; 2: 10.00x100; 3: 10.05x200; 4: 10.05x200; 5: 9.97x300; 6: 9.97x300; "
        "10.00 10.05 9.97 9.97 600 6001.00");
    row("a cancelled order is gone from the book; neither it nor a dealt one can be cancelled",
        "09:31; buy; buy 10.00 200; cancel 1; book; cancel 1; cancel 7; sell; cancel 3",
        "gone 1; 10.00x200 |; cancel fails; cancel fails; 2: 10.00x100; 3: 10.00x100; cancel fails");

    row("phases of a day and a half", "phases; 2/12:00",
        "opening auction; before open; continuous; break; continuous; closing auction; closed; "
        "opening auction; before open; continuous; break");
    row("no orders while it is closed", "09:14:59.999; buy; 15:00; buy; 2/00:00; buy",
        "no: 非交易时间; no: 非交易时间; no: 非交易时间");
    row("when cancels are closed",
        "09:15; buy; buy; buy; buy; 09:19:59.999; cancel 1; 09:20; cancel 2; 09:24:59.999; cancel 2; 09:25; "
        "cancel 2; 14:56:59.999; cancel 3; 14:57; cancel 4; 14:59:59.999; cancel 4; 15:00; cancel 4",
        "gone 1; cancel fails; cancel fails; gone 2; gone 3; cancel fails; cancel fails; gone 4; "
        "cancel fails");
    row("before the open and in the break orders wait out of the book",
        "09:26; buy; sell 9.99; book; 09:29:59.999; book; 09:30; 11:30; sell 10.01; cancel 3; buy 10.02; "
        "book; 13:00; book",
        "|; |; 1: 10.00x100; 2: 10.00x100; gone 3; |; 10.02x100 |");
    row("a waiting order can't be filled", "11:31; buy; fill 1 100 1; 13:00; fill 1 100 1",
        "fill fails; 1: 10.00x100");
    row("the day ends all that is open, the waiting ones too, and the next begins from its last price",
        "14:00; buy 9.50; sell 10.50; buy 10.10; sell 10.10; 15:00; book; 2/09:31; book; limits; day",
        "3: 10.10x100; 4: 10.10x100; gone 1; gone 2; |; |; 9.09 to 11.11; 0.00 0.00 0.00 0.00 0 0.00");

    row("auction: most volume",
        "09:16; buy 10.05; buy 10.03 200; buy 10.00 400; sell 9.98 300; sell 10.01; sell 10.03 200; book; "
        "09:25; book",
        "10.01x300 | 10.01x300; 1: 10.01x100; 4: 10.01x100; 2: 10.01x200; 4: 10.01x200; "
        "10.00x400 | 10.01x100 10.03x200");
    row("auction: at the close's price where any between would do", "09:16; buy 10.20; sell 9.90; 09:25",
        "1: 10.00x100; 2: 10.00x100");
    row("auction: least left over", "09:16; buy 10.05 300; buy 10.02; sell 10.00 300; 09:25; book",
        "1: 10.05x300; 3: 10.05x300; 10.02x100 |");
    row("auction: what is better than the price is dealt whole",
        "09:16; buy 10.10 200; sell 9.90; 09:25; book", "1: 10.10x100; 2: 10.10x100; 10.10x100 |");
    row("auction: the earlier of two, in parts", "09:16; buy 10.00 200; buy 10.00 200; sell 10.00 300; 09:25",
        "1: 10.00x200; 3: 10.00x200; 2: 10.00x100; 3: 10.00x100");
    row("auction: nothing meets", "09:16; buy 9.99; sell 10.01; book; 09:25; book; 09:30; book",
        "|; 9.99x100 | 10.01x100; 9.99x100 | 10.01x100");
    row("closing auction: nearest to the last price, which becomes the close",
        "14:00; buy 10.10; sell 10.10; 14:58; buy 10.30; sell 9.80; 15:00; 2/00:00; limits",
        "1: 10.10x100; 2: 10.10x100; 3: 10.10x100; 4: 10.10x100; 9.09 to 11.11");
    row("closing auction: the book goes into it, and no protected limit holds",
        "14:00; sell; 14:57; book; buy 11.00 200; book; 15:00",
        "|; 11.00x100 | 11.00x100; 2: 11.00x100; 1: 11.00x100; gone 2");

    row("fill: at the order's own price, in whole lots, the rest stays",
        "09:31; buy 9.90 1000; sell; fill 1 700 3; book; day",
        "1: 9.90x300; 1: 9.90x200; 1: 9.90x200; 9.90x300 | 10.00x100; 9.90 9.90 9.90 9.90 700 6930.00");
    row("fill: more than is left, more parts than lots",
        "09:31; sell 10.00 300; fill 1 900 2; fill 1 100 1; buy 10.00 300; fill 2 3 5; fill 2 0 1; "
        "fill 2 1 0",
        "1: 10.00x200; 1: 10.00x100; fill fails; 2: 10.00x1; 2: 10.00x1; 2: 10.00x1; fill fails; fill fails");
    row("up: takes all that is offered and stands at the limit",
        "09:31; sell 10.50 200; sell 11.00; buy 9.90; up; day; cancel 3",
        "1: 10.50x200; 2: 11.00x100; 10.50 11.00 10.50 11.00 300 3200.00; gone 3");
    row("up: who sells at the limit is dealt at once", "09:31; up; sell 11.00 5000", "1: 11.00x5000");
    row("up: who buys at the limit stands behind the crowd, and has his turn",
        "09:31; rate 200; up; buy 11.00; 09:32; 10:30", "1: 11.00x100");
    row("down: before the open, from the auction on",
        "08:00; down; 09:16; buy 9.50; 09:25; day; 09:31; buy 9.00 300",
        "1: 9.00x100; 9.00 9.00 9.00 9.00 100 900.00; 2: 9.00x300");
    row("down: without limits by a tenth; the next day it is over",
        "09:31; on 605001; down; buy 18.00; 2/09:31; book; limits", "1: 18.00x100; |; 0.00 to 0.00");
    row("up: no run in what has no book, nor after the day's end",
        "09:31; on 000001; up; book; on 730001; up; book; 15:01; on 600001; up; 2/09:31; book", "|; |; |");
    row("suspended: orders are refused and rest, cancels go",
        "09:31; buy; buy 9.99; suspend; book; sell; cancel 2; resume; book; sell",
        "|; no: 证券停牌; gone 2; 10.00x100 |; 1: 10.00x100; 3: 10.00x100");
    row("suspended through the auction: one price when it is over",
        "09:16; buy 10.20; sell 9.90; suspend; 09:31; book; resume; book",
        "|; 1: 10.00x100; 2: 10.00x100; |");
    row("resumed in the break: one price when trade begins",
        "09:16; buy 10.20; sell 9.90; suspend; 11:31; resume; book; 13:00; book",
        "10.00x100 | 10.00x100; 1: 10.00x100; 2: 10.00x100; |");
    row("suspended while an order waits: it isn't dealt at one o'clock",
        "11:00; sell; 11:31; buy; suspend; 13:01; resume; 15:00", "2: 10.00x100; 1: 10.00x100");
    row("a subscription is never dealt and ends with the day",
        "09:31; on 730001; buy 5.00 1000; book; fill 1 500 1; 15:00", "|; fill fails; gone 1");
    row("a subscription can be cancelled in the break", "11:31; on 730001; buy 5.00 500; cancel 1", "gone 1");
}

void ExchangeTest::Tells()
{
    QFETCH(QString, steps);
    QFETCH(QString, told);
    Stage stage;
    QCOMPARE(QString::fromStdString(stage.Play(steps.toStdString())), told);
}

PANELRY_TEST(ExchangeTest)
#include "exchange_test.moc"
