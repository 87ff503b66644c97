#include "support/rows.h"
#include "support/test.h"
#include "watchlist/list_stage.h"

using namespace panelry;
using namespace panelry::test;

namespace
{

constexpr int kLimit = 200;

// "first/1= ... last/1=", downward or upward.
std::string Numbered(int first, int last)
{
    std::string words = std::to_string(first) + "/1=";
    for (int i = first; i != last;) {
        i += i < last ? 1 : -1;
        words += ' ' + std::to_string(i) + "/1=";
    }
    return words;
}

void Select(ListStage& stage, const std::string& words)
{
    for (StringMap& stock : Stocks(words)) {
        stage.m_present->OnStockSelected(&stock);
    }
}

}  // namespace

class LatestTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void Selecting_data()
    {
        const Rows<std::string, std::string, std::string> row("file selected expected");
        row("newest first", "", "1/1=one 2/1=two", "2/1=two 1/1=one");
        row("once, under its newest name", "", "1/1=old 2/1=two 1/1=new", "1/1=new 2/1=two");
        row("two markets, two entries", "", "1/1= 1/2=", "1/2= 1/1=");
        row("absent keys are empty", "", "1", "1/=");
        row("the oldest goes", "", Numbered(0, kLimit), Numbered(kLimit, 1));
        row("a known one in a full list", Numbered(1, kLimit), "150/1=new",
            "150/1=new " + Numbered(1, 149) + " " + Numbered(151, kLimit));
        row("a file that is too long", Numbered(1, kLimit + 5), "0/1=", "0/1= " + Numbered(1, kLimit - 1));
    }

    void Selecting()
    {
        QFETCH(const std::string, file);
        QFETCH(const std::string, selected);
        QFETCH(const std::string, expected);
        ListStage stage;
        stage.Put(kUserFile, "[]");
        stage.Put(kLatestFile, QByteArray::fromStdString(nlohmann::json(Stocks(file)).dump()));
        QVERIFY(stage.Load());
        Listener listener;
        stage.Listen(kListenLatest, &listener);
        Select(stage, selected);
        QCOMPARE(listener.m_heard.size(), Stocks(selected).size() + 1);
        QCOMPARE(listener.m_heard.back(), "8: " + expected);
        stage.End();
        QCOMPARE(stage.List(kLatestFile), expected);
    }

    void Payloads()
    {
        for (const char* const fromLatest : {"1", "0", "", "true"}) {
            const bool isPicked = *fromLatest == '1';  // from the list itself
            ListStage stage("");
            stage.m_present->OnStockSelected(nullptr);
            StringMap payload{{"stockcode", "1"}, {"from_lastest", fromLatest}, {"note", "not kept"}};
            stage.m_present->OnStockSelected(&payload);
            QCOMPARE(stage.Current(kListenLatest), std::string(isPicked ? "" : "1/="));
            QCOMPARE(payload.size(), std::size_t{isPicked ? 3U : 5U});  // "market" and "stockname" came in
        }
    }

    void AReusedEntryKeepsItsOtherKeys()
    {
        ListStage stage;
        StockList full = Stocks(Numbered(1, kLimit));
        full.back()["note"] = "kept";
        stage.Put(kUserFile, "[]");
        stage.Put(kLatestFile, QByteArray::fromStdString(nlohmann::json(full).dump()));
        stage.Load();
        Select(stage, "0/1=");
        QCOMPARE(Words({Stocks(stage.Current(kListenLatest)).front()}), std::string("0/1=+note"));
    }

    void AListenerMaySelect()
    {
        ListStage stage("");
        Listener listener;
        stage.Listen(kListenLatest, &listener);
        listener.m_then = [&] {
            if (listener.m_heard.size() == 2) {
                Select(stage, "2/1=");
            }
        };
        Select(stage, "1/1=");
        QCOMPARE(listener.m_heard, (std::vector<std::string>{"6: ", "8: 1/1=", "8: 2/1= 1/1="}));
    }

    void WhatIsntUtf8DoesntTakeTheOthersWithIt()
    {
        ListStage stage("");
        Select(stage, "1/1=one 2/1=two");
        StringMap gbk{{"stockcode", "3"}, {"market", "1"}, {"stockname", "\xC6\xD6"}};
        stage.m_present->OnStockSelected(&gbk);
        stage.End();
        QCOMPARE(stage.List(kLatestFile), std::string("2/1=two 1/1=one"));
    }

    void AnOddFileCountsAsEmpty()
    {
        for (const char* const file :
             {"{}", "[1]", "[{\"stockcode\":1}]", "[{\"stockcode\":\"1\"}", "null"}) {
            ListStage stage;
            stage.Put(kUserFile, "[]");
            stage.Put(kLatestFile, file);
            QVERIFY2(stage.Load(), file);
            QVERIFY2(stage.Current(kListenLatest).empty(), file);
        }
    }
};

PANELRY_TEST(LatestTest)

#include "latest_test.moc"
