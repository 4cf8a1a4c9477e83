// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <memory>

#include "base/AtomicReference.h"
#include "base/OneShot.h"
#include "base/Weakly.h"
#include "tests/support/JoiningThread.h"

namespace tarvik {
namespace {

struct Owner : std::enable_shared_from_this<Owner> {
    void add(int number) { sum += number; }
    int sum = 0;
};

TEST(Weakly, CallsAMemberOrAnActionWhileTheOwnerLives) {
    const auto owner = std::make_shared<Owner>();
    weakly(*owner, &Owner::add)(3);
    weakly(*owner, [](Owner& self, int number) { self.sum *= number; })(5);
    EXPECT_EQ(owner->sum, 15);
}

TEST(Weakly, DoesNotHoldTheOwnerAndDoesNothingOnceItIsGone) {
    auto owner = std::make_shared<Owner>();
    const std::weak_ptr<Owner> watched = owner;
    int calls = 0;
    const auto callback = weakly(*owner, [&calls](Owner&) { ++calls; });
    owner.reset();
    EXPECT_TRUE(watched.expired());
    callback();
    EXPECT_EQ(calls, 0);
}

TEST(Weakly, KeepsTheOwnerAliveDuringTheCall) {
    auto owner = std::make_shared<Owner>();
    weakly(*owner, [&owner](Owner& self) {
        owner.reset();
        self.add(1);
        EXPECT_EQ(self.sum, 1);
    })();
    EXPECT_EQ(owner, nullptr);
}

TEST(OneShot, KeepsTheCallbackUntilItIsTaken) {
    OneShot<int> completion;
    EXPECT_FALSE(completion.take());
    int answer = 0;
    completion.store([&](int number) { answer = number; });
    const auto taken = completion.take();
    EXPECT_FALSE(completion.take());
    taken(7);
    EXPECT_EQ(answer, 7);
}

TEST(OneShot, NewCallbackReleasesTheOldOneUncalled) {
    OneShot<> completion;
    int first = 0;
    int second = 0;
    completion.store([&] { ++first; });
    completion.store([&] { ++second; });
    completion.take()();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST(OneShot, ExactlyOneOfTwoThreadsTakesTheCallback) {
    for (int round = 0; round < 500; ++round) {
        OneShot<> completion;
        std::atomic<int> calls = 0;
        completion.store([&] { ++calls; });
        std::barrier together(2);
        const auto takeAndCall = [&] {
            together.arrive_and_wait();
            if (const auto taken = completion.take()) {
                taken();
            }
        };
        simulated::JoiningThread other(takeAndCall);
        takeAndCall();
        other.join();
        ASSERT_EQ(calls, 1);
    }
}

TEST(AtomicReference, MayBeReadWhileAnotherThreadReplacesIt) {
    AtomicReference<const int> reference;
    simulated::JoiningThread writer([&] {
        for (int number = 1; number <= 2000; ++number) {
            reference.store(std::make_shared<const int>(number));
        }
    });
    int last = 0;
    while (last < 2000) {
        const std::shared_ptr<const int> seen = reference.load();
        const int number = seen ? *seen : 0;
        ASSERT_GE(number, last);
        last = number;
    }
}

}  // namespace
}  // namespace tarvik
