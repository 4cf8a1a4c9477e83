#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/MonotonicClock.h"
#include "platform/linux/system/SystemLog.h"

namespace tarvik::conformance {

namespace {

/// Standard error as a pipe, as long as the object lives.
class CapturedErrors {
  public:
    CapturedErrors() : saved_(dup(STDERR_FILENO)) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            std::abort();
        }
        output_ = linuxdesktop::FileDescriptor(ends[0]);
        dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
    }
    ~CapturedErrors() { restore(); }

    void restore() {
        if (saved_) {
            dup2(saved_.number(), STDERR_FILENO);
            saved_ = linuxdesktop::FileDescriptor();
        }
    }

    /// Reads on until `text` has come; false at the end.
    bool readUntil(const std::string& text) {
        return readWhile([&] { return text_.find(text) == std::string::npos; });
    }

    /// Reads on until so many lines have come; false at the end.
    bool readLines(std::ptrdiff_t count) {
        return readWhile([&] { return std::count(text_.begin(), text_.end(), '\n') < count; });
    }

    /// Everything that was written.
    std::vector<std::string> lines() {
        restore();
        readUntil("never written");
        std::vector<std::string> result;
        std::istringstream stream(text_);
        for (std::string line; std::getline(stream, line);) {
            result.push_back(line);
        }
        return result;
    }

  private:
    bool readWhile(const std::function<bool()>& isMissing) {
        std::array<char, 4096> part{};
        while (isMissing()) {
            const ssize_t size = read(output_.number(), part.data(), part.size());
            if (size <= 0) {
                return false;
            }
            text_.append(part.data(), static_cast<std::size_t>(size));
        }
        return true;
    }

    linuxdesktop::FileDescriptor saved_;
    linuxdesktop::FileDescriptor output_;
    std::string text_;
};

TEST(SystemLogTest, LinesOfManyThreadsStayWholeAndInOrder) {
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

TEST(SystemLogTest, ALineBreakInTheTextMakesNoSecondLine) {
    CapturedErrors errors;
    {
        linuxdesktop::SystemLog log;
        log.write("one\ntwo\r\nthree\x1b[31m %s Zażółć");
    }
    EXPECT_EQ(errors.lines(), (std::vector<std::string>{"one two  three [31m %s Zażółć"}));
}

TEST(SystemLogTest, AReaderThatStopsReadingHoldsNobodyUpAndLearnsWhatItMissed) {
    CapturedErrors errors;
    const linuxdesktop::MonotonicClock clock;
    const TimePoint start = clock.now();
    auto log = std::make_unique<linuxdesktop::SystemLog>();
    for (int number = 0; number < 20000; ++number) {
        log->write("a line that is long enough to fill the pipe before half of them are written");
    }
    EXPECT_LT((clock.now() - start).count(), 1.0);
    // Only now somebody reads: what was not dropped arrives, and how many were.
    EXPECT_TRUE(errors.readLines(10000));
    log.reset();
    const std::vector<std::string> lines = errors.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("log lines were dropped because nobody took them") != std::string::npos;
    }));
}

TEST(SystemLogTest, AReaderThatNeverReadsDelaysTheEndByASecondAtMost) {
    CapturedErrors errors;
    const linuxdesktop::MonotonicClock clock;
    auto log = std::make_unique<linuxdesktop::SystemLog>();
    for (int number = 0; number < 5000; ++number) {
        log->write("a line that is long enough to fill the pipe before half of them are written");
    }
    const TimePoint start = clock.now();
    log.reset();
    EXPECT_LT((clock.now() - start).count(), 2.0);
    // The thread that was left behind ends with its last line.
    EXPECT_TRUE(errors.readLines(5000));
}

}  // namespace

}  // namespace tarvik::conformance
