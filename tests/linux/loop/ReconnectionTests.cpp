// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "platform/linux/loop/Reconnection.h"
#include "tests/linux/loop/LoopDriver.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using linuxdesktop::Reconnection;

class ReconnectionTest : public testing::TestWithParam<LoopKind> {
  protected:
    bool becomesCalled(int count) {
        return driver->runUntil([&] { return calls >= count; });
    }
    bool staysCalled(int count) {
        return !driver->runUntil([&] { return calls > count; }, 500ms);
    }

    std::unique_ptr<LoopDriver> driver = GetParam().make();
    TemporaryFolder folder;
    int calls = 0;
    bool listens = false;
    Reconnection reconnection{driver->loop(), folder.path() / "socket", [this] {
                                  ++calls;
                                  return listens;
                              }};
};

TEST_P(ReconnectionTest, ConnectsSoonAfterALossAndThenNoMore) {
    listens = true;
    reconnection.begin();
    EXPECT_TRUE(becomesCalled(1));
    EXPECT_TRUE(staysCalled(1));
}

TEST_P(ReconnectionTest, TriesAFewTimesAtGrowingIntervalsAndThenWaitsForTheSocket) {
    const auto start = std::chrono::steady_clock::now();
    reconnection.begin();
    EXPECT_TRUE(becomesCalled(6));
    // 0.1 s, and five times twice the interval before.
    EXPECT_GT(std::chrono::steady_clock::now() - start, 6s);
    EXPECT_TRUE(staysCalled(6));
    std::ofstream(folder.path() / "another") << "";
    EXPECT_TRUE(staysCalled(6));
    listens = true;
    std::ofstream(folder.path() / "socket") << "";
    EXPECT_TRUE(becomesCalled(7));
    EXPECT_TRUE(staysCalled(7));
}

TEST_P(ReconnectionTest, AConnectionThatIsLostAgainAtOnceHasALongerInterval) {
    listens = true;
    for (int loss = 0; loss < 4; ++loss) {
        reconnection.begin();
        ASSERT_TRUE(becomesCalled(loss + 1));
    }
    const auto start = std::chrono::steady_clock::now();
    reconnection.begin();
    EXPECT_TRUE(becomesCalled(5));
    EXPECT_GT(std::chrono::steady_clock::now() - start, 1500ms);
}

TEST_P(ReconnectionTest, TriesNoMoreAfterItsEnd) {
    reconnection.begin();
    reconnection.end();
    std::ofstream(folder.path() / "socket") << "";
    EXPECT_TRUE(staysCalled(0));
}

INSTANTIATE_TEST_SUITE_P(Loops, ReconnectionTest, testing::ValuesIn(everyLoop()), nameOf);

}  // namespace

}  // namespace tarvik::tests
