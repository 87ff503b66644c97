#include <cstdlib>
#include <new>

#include "logger/log4z/record_queue.h"
#include "stage.h"
#include "support/test.h"

using namespace panelry::test;

namespace
{

thread_local constinit std::size_t allocations = 0;

template <class Action>
std::size_t AllocationsOf(const Action& action)
{
    const std::size_t before = allocations;
    action();
    return allocations - before;
}

}  // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

/// Callers find all memory there that they need, however long a flood of lines lasts.
class WarmPathTest : public Test
{
    Q_OBJECT

private Q_SLOTS:
    void AQueueKeepsRoomForTheLinesOfAFlood()
    {
        panelry::logger::RecordQueue queue;
        const std::string line(144, 'x');
        const auto fill = [&] {
            for (int i = 0; i < 40'000; ++i) {  // here callers are slowed down most
                queue.Append({}, line);
            }
        };
        QVERIFY(AllocationsOf(fill) > 0);
        queue.Recycle(false);
        QCOMPARE(AllocationsOf(fill), std::size_t(0));
    }

    void AWrittenLineAllocatesNothing()
    {
        const Stage stage;
        log4z::LogerManager manager;
        QVERIFY(manager.Start());
        const panelry::logger::Logger log(0, manager);
        const auto write = [&] { log.Write(log4z::Info, "order ", 1200, " of 600519 at ", 1688.25); };
        for (const std::uint64_t written : {3U, 4U}) {  // one for each queue, behind the start's two
            write();
            QTRY_COMPARE(manager.WriteCount(), written);
        }
        const auto writeMore = [&] {
            for (int i = 0; i < 100; ++i) {
                write();
            }
        };
        QCOMPARE(AllocationsOf(writeMore), std::size_t(0));
        QVERIFY(manager.Stop());
        QCOMPARE(TextsOf("Main").size(), std::size_t(102));
    }
};
PANELRY_TEST(WarmPathTest)

#include "warm_path_test.moc"
