#include "korsys/main/thread/TEvent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int kPatienceMs = 60000; // far beyond what any step takes

void JoinAll(std::vector<std::thread>& threads)
{
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(TEventTest, StaysSignalledUntilReset)
{
    TEvent event;
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(event.Wait(0));
        EXPECT_FALSE(event.Wait(1));
        event.Signal();
        event.Signal();
        EXPECT_TRUE(event.Wait(0));
        EXPECT_TRUE(event.Wait(1));
        EXPECT_TRUE(event.Wait(-1));
        event.Reset();
        event.Reset();
    }
}

TEST(TEventTest, ASignalThatIsResetAtOnceReleasesWhoWaits)
{
    TEvent event;
    std::atomic<int> returned{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i) {
        waiters.emplace_back([&, i] {
            EXPECT_TRUE(event.Wait(i % 2 == 0 ? -1 : kPatienceMs));
            ++returned;
        });
    }
    while (returned != 4) { // who comes after one pulse takes the next
        event.Signal();
        event.Reset();
    }
    JoinAll(waiters);
    EXPECT_FALSE(event.Wait(0));
}

TEST(TEventTest, AConsumerThatResetsBeforeItLooksMissesNothing)
{
    constexpr int kProducers = 3;
    constexpr int kItems = 20000;
    TEvent event;
    std::atomic<int> queued{0};
    std::vector<std::thread> producers;
    for (int i = 0; i < kProducers; ++i) {
        producers.emplace_back([&] {
            for (int item = 0; item < kItems; ++item) {
                queued.fetch_add(1, std::memory_order_relaxed); // only the event orders
                event.Signal();
            }
        });
    }
    int taken = 0;
    bool inTime = true;
    while (inTime && taken < kProducers * kItems) {
        event.Reset();
        int const items = queued.exchange(0, std::memory_order_relaxed);
        taken += items;
        inTime = items != 0 || event.Wait(kPatienceMs);
    }
    JoinAll(producers);
    EXPECT_TRUE(inTime) << "an item was queued and nobody woke up, taken " << taken;
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
