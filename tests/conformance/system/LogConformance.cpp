// SPDX-License-Identifier: MIT

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/conformance/system/SystemConformance.h"

namespace tarvik::tests {

namespace {

class LogConformance : public SystemConformance {
  protected:
    LogConformance() { world->watchLog(); }

    /// The lines that begin with `start`; others may write to the same place.
    std::vector<std::string> linesFrom(std::string_view start) {
        std::vector<std::string> lines = world->logLines();
        std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(start); });
        return lines;
    }
};

TEST_P(LogConformance, LinesOfEachThreadComeWholeAndInTheirOrder) {
    std::vector<std::string> expected;
    for (int number = 1000; number < 1100; ++number) {
        expected.push_back("one " + std::to_string(number));
    }
    std::thread other([&] {
        for (int number = 1000; number < 1100; ++number) {
            world->log().write("other " + std::to_string(number));
        }
    });
    for (const std::string& line : expected) {
        world->log().write(line);
    }
    other.join();
    EXPECT_TRUE(world->runUntil([&] {
        return linesFrom("one ").size() == expected.size() &&
               linesFrom("other ").size() == expected.size();
    }));
    EXPECT_EQ(linesFrom("one "), expected);
    const std::vector<std::string> others = linesFrom("other ");
    EXPECT_TRUE(std::is_sorted(others.begin(), others.end()));
}

TEST_P(LogConformance, ALineIsTheTextThatWasWritten) {
    const std::string line = "text: Zażółć 日本語 😀 — 100 % %s %n \\n \"quoted\"";
    world->log().write(line);
    EXPECT_TRUE(world->runUntil([&] { return !linesFrom("text: ").empty(); }));
    EXPECT_EQ(linesFrom("text: "), std::vector<std::string>{line});
}

INSTANTIATE_TEST_SUITE_P(Worlds, LogConformance, everySystemWorld(), systemWorldName);

}  // namespace

}  // namespace tarvik::tests
