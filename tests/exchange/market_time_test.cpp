#include <ctime>

#include "exchange/stage.h"
#include "support/rows.h"
#include "support/test.h"

using namespace panelry::desk;
using namespace std::chrono_literals;
using panelry::desk::test::Time;
using panelry::test::Rows;

namespace
{

QString Text(MarketTime time)
{
    return QString::number(time.day) + QLatin1Char('/') + QString::fromStdString(ClockText(time.ofDay));
}

}  // namespace

class MarketTimeTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void PhasesFollowTheTimetable_data()
    {
        const Rows<const char*, const char*, const char*, const char*, const char*> row(
            "time phase text16 text32 next");
        row("midnight", "00:00", "closed", "E", "E0", "09:15:00");
        row("before the auction", "09:14:59.999", "closed", "E", "E0", "09:15:00");
        row("auction", "09:15", "opening auction", "C", "O0", "09:25:00");
        row("before open", "09:25", "before open", "B", "B0", "09:30:00");
        row("morning", "09:30", "continuous", "T", "T0", "11:30:00");
        row("last of the morning", "11:29:59.999", "continuous", "T", "T0", "11:30:00");
        row("break", "11:30", "break", "B", "B0", "13:00:00");
        row("afternoon", "13:00", "continuous", "T", "T0", "14:57:00");
        row("closing auction", "14:57", "closing auction", "U", "C0", "15:00:00");
        row("closed", "15:00", "closed", "E", "E0", "24:00:00");
    }
    void PhasesFollowTheTimetable()
    {
        QFETCH(QString, time);
        const auto ofDay = Time(time.toStdString()).ofDay;
        const Phase phase = PhaseAt(ofDay);
        QTEST(QString::fromStdString(PhaseName(phase)), "phase");
        QTEST(QString::fromStdString(PhaseText(phase, 17, false)), "text16");
        QTEST(QString::fromStdString(PhaseText(phase, 37, false)), "text32");
        QTEST(QString::fromStdString(ClockText(NextPhaseAt(ofDay))), "next");
        QVERIFY(PhaseText(phase, 22, true)[0] != 'T' && PhaseText(phase, 33, true)[1] == '1');
    }

    void DatesCountFromTheFirst()
    {
        // The next month, the next year, a leap day.
        for (const auto& [day, date] :
             {std::pair(1, "2026-07-01"), {32, "2026-08-01"}, {185, "2027-01-01"}, {609, "2028-02-29"}}) {
            QCOMPARE(DateText(day), std::string(date));
            const std::time_t epoch = EpochSeconds({day, 14h + 56min + 59s + 999ms});
            std::tm local{};
            localtime_r(&epoch, &local);
            char text[32];
            std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
            QCOMPARE(std::string(text), date + std::string(" 14:56:59"));
        }
    }

    void ClockRuns()
    {
        const MarketClock::Instant start{};
        MarketClock clock({1, 23h + 59min}, 1, start);
        QCOMPARE(Text(clock.At(start + 59s)), QStringLiteral("1/23:59:59"));
        QCOMPARE(Text(clock.At(start + 61s)), QStringLiteral("2/00:00:01"));
        clock.SetSpeed(60, start + 60s);
        QCOMPARE(Text(clock.At(start + 90s)), QStringLiteral("2/00:30:00"));
        clock.SetSpeed(0, start + 90s);
        QCOMPARE(Text(clock.At(start + 999s)), QStringLiteral("2/00:30:00"));
        clock.Step(24h + 1s, start + 999s);
        QCOMPARE(Text(clock.At(start + 1000s)), QStringLiteral("3/00:30:01"));
        clock.MoveTo({3, 0h}, start + 1000s);
        QCOMPARE(Text(clock.At(start + 1000s)), QStringLiteral("3/00:30:01"));
        clock.SetSpeed(2, start + 1000s);
        clock.MoveTo({3, 9h}, start + 1010s);
        QCOMPARE(Text(clock.At(start + 1011s)), QStringLiteral("3/09:00:02"));
    }
};

PANELRY_TEST(MarketTimeTest)
#include "market_time_test.moc"
