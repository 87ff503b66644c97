#include "bridge/deferred_queue.h"

#include <thread>

#include "support/test.h"

using namespace panelry::bridge;

class DeferredQueueTest : public panelry::test::Test
{
    Q_OBJECT

private Q_SLOTS:
    void TakenMessagesCountUntilTheyAreEmitted()
    {
        const auto park = [](int id) { ParkMessage({0, id, std::make_shared<const std::string>("text")}); };
        park(1);
        park(2);
        const std::deque<DeferredMessage> taken = TakeParked();
        QVERIFY(taken.size() == 2 && taken[0].nId == 1 && taken[1].nId == 2);
        park(3);
        QCOMPARE(Undelivered.load(), std::size_t{3});
        DiscardParked();
        QCOMPARE(Undelivered.load(), std::size_t{2});  // what was taken is still somebody's to emit
        QVERIFY(TakeParked().empty());
        Undelivered -= taken.size();
    }

    void DiscardedTextsDieOutsideTheLock()
    {
        bool free = false;
        const auto tryLock = [&free](const std::string* text) {
            std::thread([&free] {
                free = DeferredQueueLock.try_lock();
                if (free) {
                    DeferredQueueLock.unlock();
                }
            }).join();
            delete text;
        };
        ParkMessage({0, 1, std::shared_ptr<const std::string>(new std::string, tryLock)});
        DiscardParked();
        QVERIFY(free);
        QCOMPARE(Undelivered.load(), std::size_t{0});
    }
};

PANELRY_TEST(DeferredQueueTest)
#include "deferred_queue_test.moc"
