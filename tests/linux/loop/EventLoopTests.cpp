// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/loop/FileDescriptor.h"
#include "tests/linux/loop/LoopDriver.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::Deadline;
using linuxdesktop::EventLoop;
using linuxdesktop::FileDescriptor;
using std::chrono::steady_clock;

class EventLoopTest : public testing::TestWithParam<LoopKind> {
  protected:
    EventLoopTest() {
        std::array<int, 2> ends{};
        EXPECT_EQ(pipe(ends.data()), 0);
        output = FileDescriptor(ends[0]);
        input = FileDescriptor(ends[1]);
    }

    void writeByte() { EXPECT_EQ(write(input.number(), "x", 1), 1); }
    void readByte() {
        char byte = 0;
        EXPECT_EQ(read(output.number(), &byte, 1), 1);
    }

    void runTurn() { driver->runTurn(); }

    std::unique_ptr<LoopDriver> driver = GetParam().make();
    FileDescriptor output;
    FileDescriptor input;
};

TEST_P(EventLoopTest, ADescriptorIsReportedWhileItIsReadyForAnAwaitedEvent) {
    int calls = 0;
    const auto watch = driver->loop().watch(output.number(), POLLIN, [&] {
        ++calls;
        readByte();
    });
    runTurn();
    EXPECT_EQ(calls, 0);
    writeByte();
    writeByte();
    EXPECT_TRUE(driver->runUntil([&] { return calls == 2; }));
    watch->setEvents(0);
    writeByte();
    runTurn();
    runTurn();
    EXPECT_EQ(calls, 2);
    watch->setEvents(POLLIN);
    EXPECT_TRUE(driver->runUntil([&] { return calls == 3; }));
}

TEST_P(EventLoopTest, ADescriptorThatCanBeWrittenIsReportedToo) {
    bool isReady = false;
    std::unique_ptr<EventLoop::Watch> watch;
    watch = driver->loop().watch(input.number(), POLLOUT, [&] {
        isReady = true;
        watch->setEvents(0);
    });
    EXPECT_TRUE(driver->runUntil([&] { return isReady; }));
}

TEST_P(EventLoopTest, AWatchEndsWithItsHandleAlsoInsideItsOwnCall) {
    int calls = 0;
    std::unique_ptr<EventLoop::Watch> watch;
    watch = driver->loop().watch(output.number(), POLLIN, [&, kept = std::string(100, 'x')] {
        watch.reset();
        calls += static_cast<int>(kept.size());
    });
    writeByte();
    EXPECT_TRUE(driver->runUntil([&] { return calls > 0; }));
    runTurn();
    runTurn();
    EXPECT_EQ(calls, 100);
}

TEST_P(EventLoopTest, AWatchMayEndAnotherOneThatIsReadyInTheSameTurn) {
    const FileDescriptor second(dup(output.number()));
    int calls = 0;
    std::array<std::unique_ptr<EventLoop::Watch>, 2> watches;
    const auto endTheOther = [&](std::size_t number) {
        ++calls;
        watches[1 - number].reset();
        watches[number]->setEvents(0);
    };
    watches[0] = driver->loop().watch(output.number(), POLLIN, [&] { endTheOther(0); });
    watches[1] = driver->loop().watch(second.number(), POLLIN, [&] { endTheOther(1); });
    writeByte();
    EXPECT_TRUE(driver->runUntil([&] { return calls > 0; }));
    runTurn();
    EXPECT_EQ(calls, 1);
}

TEST_P(EventLoopTest, DeadlinesComeInTheirOrderAndNotBeforeTheirTime) {
    std::vector<int> order;
    Deadline later(driver->loop());
    Deadline sooner(driver->loop());
    const auto start = steady_clock::now();
    later.set(60ms, [&] { order.push_back(2); });
    sooner.set(start + 20ms, [&] { order.push_back(1); });
    EXPECT_TRUE(driver->runUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_GE(steady_clock::now() - start, 60ms);
}

TEST_P(EventLoopTest, DeadlinesThatAreDueTogetherComeInTheirOrder) {
    std::vector<int> order;
    Deadline later(driver->loop());
    Deadline sooner(driver->loop());
    const auto start = steady_clock::now();
    later.set(start + 2ms, [&] { order.push_back(2); });
    sooner.set(start + 1ms, [&] { order.push_back(1); });
    // The thread is busy until both are due.
    while (steady_clock::now() < start + 3ms) {
    }
    EXPECT_TRUE(driver->runUntil([&] { return order.size() == 2; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_P(EventLoopTest, ADeadlineCallsOnceAndIsSetAgainByItsOwnAction) {
    int calls = 0;
    Deadline deadline(driver->loop());
    const std::function<void()> action = [&] {
        if (++calls < 3) {
            deadline.set(steady_clock::time_point(), action);
        }
    };
    deadline.set(0ms, action);
    EXPECT_TRUE(driver->runUntil([&] { return calls == 3; }));
    runTurn();
    EXPECT_EQ(calls, 3);
}

TEST_P(EventLoopTest, AClearedReplacedOrDroppedDeadlineIsNotCalled) {
    bool isCalled = false;
    int replaced = 0;
    Deadline cleared(driver->loop());
    cleared.set(0ms, [&] { isCalled = true; });
    cleared.clear();
    Deadline reset(driver->loop());
    reset.set(0ms, [&] { isCalled = true; });
    reset.set(10ms, [&] { ++replaced; });
    std::optional<Deadline> dropped(std::in_place, driver->loop());
    dropped->set(0ms, [&] { isCalled = true; });
    dropped.reset();
    EXPECT_TRUE(driver->runUntil([&] { return replaced == 1; }));
    EXPECT_FALSE(isCalled);
}

TEST_P(EventLoopTest, ADeadlineMayBeDroppedByItsOwnAction) {
    int calls = 0;
    auto deadline = std::make_unique<Deadline>(driver->loop());
    deadline->set(0ms, [&, kept = std::string(100, 'x')] {
        deadline.reset();
        calls += static_cast<int>(kept.size());
    });
    EXPECT_TRUE(driver->runUntil([&] { return calls == 100; }));
}

INSTANTIATE_TEST_SUITE_P(Over, EventLoopTest, testing::ValuesIn(everyLoop()), nameOf);

}  // namespace

}  // namespace tarvik::tests
