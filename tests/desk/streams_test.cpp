#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "desk/desk_process.h"
#include "desk/output.h"
#include "desk/typed_input.h"
#include "support/test.h"

using panelry::test::Pipe;

namespace
{

const std::string kLong = std::string(100'000, 'x') + '\n';  // more than a pipe holds

}  // namespace

class StreamsTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void ALineMayComeInPieces()
    {
        const Pipe pipe;
        panelry::desk::TypedInput input(pipe.ends[0]);
        pipe.Put("one\nshow ");
        input.Read();
        QCOMPARE(input.TakeLine(), std::optional<std::string>("one"));
        QCOMPARE(input.TakeLine(), std::nullopt);
        pipe.Put("7\n\nquit");
        input.Read();
        QCOMPARE(input.TakeLine(), std::optional<std::string>("show 7"));
        QCOMPARE(input.TakeLine(), std::optional<std::string>(""));
        QCOMPARE(input.TakeLine(), std::nullopt);
        QCOMPARE(input.LineNumber(), 3);
    }

    void AfterAStopWhatFindsNoRoomIsLeftOutWhole()
    {
        const Pipe pipe;
        const Pipe stop;
        stop.Put("now");
        panelry::desk::Output output(pipe.ends[1], stop.ends[0], std::chrono::milliseconds(0));
        QVERIFY(output.Write("first\n"));
        QVERIFY(!output.Write(kLong));      // begun
        QVERIFY(!output.Write("never\n"));  // not even begun
        std::string taken = pipe.TakeAll();
        QVERIFY(output.Write("last\n"));  // the reader is back
        taken += pipe.TakeAll();
        QCOMPARE(taken, "first\n" + kLong + "last\n");
    }

    void AReaderThatWentAwayIsNoMatter()
    {
        signal(SIGPIPE, SIG_IGN);
        Pipe pipe;
        const Pipe stop;
        close(std::exchange(pipe.ends[0], -1));
        panelry::desk::Output output(pipe.ends[1], stop.ends[0]);
        QVERIFY(output.Write(kLong));
        signal(SIGPIPE, SIG_DFL);
    }
};

PANELRY_TEST(StreamsTest)
#include "streams_test.moc"
