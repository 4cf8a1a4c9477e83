// SPDX-License-Identifier: MIT

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "tests/conformance/system/LoopConformance.h"

namespace tarvik::tests {

namespace {

using MainQueueConformance = LoopConformance;

TEST_P(MainQueueConformance, ABlockNeverRunsInsideTheSubmittingCall) {
    bool hasRun = false;
    world->mainQueue().async([&] { hasRun = true; });
    world->mainQueue().asyncAfter(Seconds(0), [] {});
    EXPECT_FALSE(hasRun);
    EXPECT_TRUE(world->runUntil([&] { return hasRun; }));
}

TEST_P(MainQueueConformance, ABlockSubmittedByABlockRunsAfterIt) {
    std::vector<int> order;
    world->mainQueue().async([&] {
        world->mainQueue().async([&] { order.push_back(3); });
        order.push_back(1);
    });
    world->mainQueue().async([&] { order.push_back(2); });
    EXPECT_TRUE(world->runUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_P(MainQueueConformance, BlocksOfEveryThreadRunOnTheMainThreadInTheOrderOfSubmission) {
    constexpr int blocks = 2000;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::array<std::vector<int>, 3> seen;
    bool isOnMainThread = true;
    std::vector<std::thread> threads;
    for (std::vector<int>& own : seen) {
        threads.emplace_back([&] {
            for (int number = 0; number < blocks; ++number) {
                world->mainQueue().async([&own, &isOnMainThread, number, mainThread] {
                    own.push_back(number);
                    isOnMainThread = isOnMainThread && std::this_thread::get_id() == mainThread;
                });
            }
        });
    }
    EXPECT_TRUE(world->runUntil(
        [&] { return seen[0].size() + seen[1].size() + seen[2].size() == seen.size() * blocks; }));
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(isOnMainThread);
    for (const std::vector<int>& own : seen) {
        EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
    }
}

TEST_P(MainQueueConformance, SubmissionsThatTwoThreadsMakeInTurnsKeepTheirOrder) {
    constexpr int turns = 500;
    std::atomic<int> turn = 0;
    std::vector<int> order;
    const auto submit = [&](int own) {
        for (int number = own; number < turns; number += 2) {
            while (turn.load() != number) {
                std::this_thread::yield();
            }
            world->mainQueue().async([&order, number] { order.push_back(number); });
            turn.store(number + 1);
        }
    };
    std::thread even([&] { submit(0); });
    std::thread odd([&] { submit(1); });
    EXPECT_TRUE(world->runUntil([&] { return order.size() == turns; }));
    even.join();
    odd.join();
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_P(MainQueueConformance, ADelayedBlockIsNeverEarly) {
    int arrived = 0;
    for (int number = 0; number < 50; ++number) {
        const Seconds delay(0.0007 * number);
        const TimePoint submitted = world->clock().now();
        world->mainQueue().asyncAfter(delay, [this, &arrived, delay, submitted] {
            EXPECT_GE((world->clock().now() - submitted).count(), delay.count());
            ++arrived;
        });
    }
    EXPECT_TRUE(world->runUntil([&] { return arrived == 50; }));
}

TEST_P(MainQueueConformance, DelayedBlocksRunInTheOrderOfTheirDueTimes) {
    std::vector<int> order;
    const auto note = [&order](int number) {
        return [&order, number] { order.push_back(number); };
    };
    world->mainQueue().asyncAfter(Seconds(0.03), note(3));
    world->mainQueue().asyncAfter(Seconds(0.01), note(1));
    world->mainQueue().asyncAfter(Seconds(0.02), note(2));
    // A main thread that is late for all of them still keeps the order.
    world->stall(Seconds(0.05));
    world->mainQueue().async(note(4));
    EXPECT_TRUE(world->runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST_P(MainQueueConformance, BlocksOfAnotherThreadRunInTheOrderOfTheirDueTimes) {
    std::vector<int> order;
    const auto note = [&order](int number) {
        return [&order, number] { order.push_back(number); };
    };
    std::thread other([&] {
        world->mainQueue().asyncAfter(Seconds(0.02), note(4));
        world->mainQueue().asyncAfter(Seconds(0.01), note(3));
        world->mainQueue().async(note(1));
        world->mainQueue().async(note(2));
    });
    other.join();
    // A main thread that is late for all of them still keeps the order.
    world->stall(Seconds(0.05));
    EXPECT_TRUE(world->runUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST_P(MainQueueConformance, ADelayedBlockOfAnotherThreadWakesAnIdleLoop) {
    std::atomic<bool> isSubmitted = false;
    bool hasRun = false;
    std::thread other([&] {
        world->mainQueue().asyncAfter(Seconds(0.005), [&] { hasRun = true; });
        isSubmitted = true;
    });
    EXPECT_TRUE(world->runUntil([&] { return hasRun; }));
    other.join();
    EXPECT_TRUE(isSubmitted);
}

TEST_P(MainQueueConformance, ANegativeDelayCountsAsNone) {
    bool hasRun = false;
    world->mainQueue().asyncAfter(Seconds(-5), [&] { hasRun = true; });
    EXPECT_TRUE(world->runUntil([&] { return hasRun; }));
}

TEST_P(MainQueueConformance, ABlockThatSubmitsItselfAgainDoesNotStarveTheLoop) {
    bool isStopped = false;
    int turns = 0;
    std::function<void()> again = [&] {
        ++turns;
        if (!isStopped) {
            world->mainQueue().async(again);
        }
    };
    world->mainQueue().async(again);
    const std::unique_ptr<platform::Timer> timer =
        world->timers().scheduledRepeatingTimer(Seconds(0.00001), [&] { isStopped = true; });
    world->mainQueue().asyncAfter(Seconds(0.005), [&] { isStopped = true; });
    world->stall(Seconds(0.01));
    EXPECT_TRUE(world->runUntil([&] { return isStopped; }));
    EXPECT_GE(turns, 1);
}

TEST_P(MainQueueConformance, BlocksThatStillWaitAreDestroyedWithoutBeingRun) {
    bool hasRun = false;
    const auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    world->mainQueue().asyncAfter(Seconds(3600), [&hasRun, kept = held] { hasRun = true; });
    EXPECT_EQ(watched.use_count(), 2);
    world.reset();
    EXPECT_EQ(watched.use_count(), 1);
    EXPECT_FALSE(hasRun);
}

INSTANTIATE_TEST_SUITE_P(Worlds, MainQueueConformance, everyLoopWorld(), loopWorldName);

}  // namespace

}  // namespace tarvik::tests
