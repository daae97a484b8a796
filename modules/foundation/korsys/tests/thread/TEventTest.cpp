#include "korsys/main/thread/TEvent.h"

#include "korsys/tests/support/KorTest.h"
#include "korsys/tests/support/Threads.h"

namespace {

constexpr int kPatienceMs = 60000; // far beyond what any step takes

TEST(TEventTest, StaysSignalledUntilReset)
{
    TEvent event;
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(event.Wait(0) || event.Wait(1));
        event.Signal();
        event.Signal();
        EXPECT_TRUE(event.Wait(0) && event.Wait(1) && event.Wait(-1));
        event.Reset();
        event.Reset();
    }
}

TEST(TEventTest, ASignalThatIsResetAtOnceReleasesWhoWaits)
{
    TEvent event;
    std::atomic<int> returned{0};
    OnThreads(5, [&](unsigned thread) {
        if (thread != 0) { // the first waits for ever, the others have a limit
            EXPECT_TRUE(event.Wait(thread == 1 ? -1 : kPatienceMs));
            ++returned;
        }
        while (thread == 0 && returned != 4) { // who comes after one pulse takes the next
            event.Signal();
            event.Reset();
        }
    });
    EXPECT_FALSE(event.Wait(0));
}

TEST(TEventTest, AConsumerThatResetsBeforeItLooksMissesNothing)
{
    constexpr int kItems = 5000;
    TEvent event;
    std::atomic<int> made{0}; // plain loads and stores: only the event orders them
    std::atomic<int> seen{0};
    bool inTime = true;
    OnThreads(2, [&](unsigned thread) {
        for (int item = 1; thread == 0 && item <= kItems; ++item) {
            event.Signal(); // makes the consumer reset and look while the item is made
            made.store(item, std::memory_order_relaxed);
            event.Signal();
            while (seen.load(std::memory_order_relaxed) < item) {
                std::this_thread::yield();
            }
        }
        for (int last = 0; thread == 1 && last < kItems;) {
            event.Reset();
            int const item = made.load(std::memory_order_relaxed);
            inTime = (item != last || event.Wait(kPatienceMs)) && inTime;
            seen.store(last = item, std::memory_order_relaxed);
        }
    });
    EXPECT_TRUE(inTime) << "an item was made and nobody woke up";
}

TEST(TEventTest, WhoWaitedSeesWhatWasWrittenAndMayDestroyTheEvent)
{
    for (int round = 0; round < 500; ++round) {
        auto event = std::make_unique<TEvent>();
        int written = 0;
        std::thread signaller([&written, raw = event.get()] {
            written = 1;
            raw->Signal();
        });
        EXPECT_TRUE(event->Wait(round % 2 == 0 ? -1 : kPatienceMs));
        EXPECT_EQ(written, 1);
        event.reset();
        signaller.join();
    }
}

} // namespace
