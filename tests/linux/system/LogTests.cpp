// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/system/SystemLog.h"
#include "tests/linux/loop/ThreadShortage.h"
#include "tests/support/CapturedErrors.h"

namespace tarvik::tests {

namespace {

TEST(LogTest, LinesOfManyThreadsStayWholeAndInOrder) {
    CapturedErrors errors;
    {
        linuxdesktop::SystemLog log;
        std::vector<std::thread> threads;
        for (const char* name : {"a", "b", "c"}) {
            threads.emplace_back([&log, name] {
                for (int number = 0; number < 100; ++number) {
                    log.write(name + std::to_string(1000 + number));
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    std::vector<std::string> lines = errors.lines();
    ASSERT_EQ(lines.size(), 300U);
    std::stable_sort(lines.begin(), lines.end(),
                     [](const std::string& a, const std::string& b) { return a[0] < b[0]; });
    EXPECT_TRUE(std::is_sorted(lines.begin(), lines.end()));
}

TEST(LogTest, AFinishedLogHasWrittenEveryLine) {
    CapturedErrors errors;
    linuxdesktop::SystemLog log;
    for (int number = 0; number < 500; ++number) {
        log.write("a line");
    }
    log.finish();
    EXPECT_EQ(errors.lines().size(), 500U);
}

TEST(LogTest, WithoutAThreadLinesAreWrittenAtOnce) {
    CapturedErrors errors;
    const ThreadShortage shortage;
    linuxdesktop::SystemLog log;
    log.write("one");
    EXPECT_EQ(errors.lines(),
              (std::vector<std::string>{"TarvikDictate: no thread for the log, which is written at "
                                        "once: Resource temporarily unavailable",
                                        "one"}));
}

TEST(LogTest, ALineBreakInTheTextMakesNoSecondLine) {
    CapturedErrors errors;
    {
        linuxdesktop::SystemLog log;
        log.write("one\ntwo\r\nthree\x1b[31m %s Zażółć");
    }
    EXPECT_EQ(errors.lines(), (std::vector<std::string>{"one two  three [31m %s Zażółć"}));
}

TEST(LogTest, AReaderThatStopsReadingHoldsNobodyUpAndLearnsWhatItMissed) {
    CapturedErrors errors;
    const linuxdesktop::MonotonicClock clock;
    const TimePoint start = clock.now();
    auto log = std::make_unique<linuxdesktop::SystemLog>();
    for (int number = 0; number < 20000; ++number) {
        log->write("a line that is long enough to fill the pipe before half of them are written");
    }
    EXPECT_LT((clock.now() - start).count(), 1.0);
    // Reading begins only now: the lines that were not dropped arrive, and the number of the
    // others.
    EXPECT_TRUE(errors.readLines(10000));
    log.reset();
    const std::vector<std::string> lines = errors.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("log lines were dropped because nobody took them") != std::string::npos;
    }));
}

TEST(LogTest, AReaderThatNeverReadsDelaysTheEndByASecondAtMost) {
    CapturedErrors errors;
    const linuxdesktop::MonotonicClock clock;
    auto log = std::make_unique<linuxdesktop::SystemLog>();
    for (int number = 0; number < 5000; ++number) {
        log->write("a line that is long enough to fill the pipe before half of them are written");
    }
    const TimePoint start = clock.now();
    log.reset();
    EXPECT_LT((clock.now() - start).count(), 2.0);
    // The worker that was left behind ends after its last line.
    EXPECT_TRUE(errors.readLines(5000));
}

}  // namespace

}  // namespace tarvik::tests
