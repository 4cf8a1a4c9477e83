// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "tests/linux/input/SessionFixture.h"

namespace tarvik::tests {

/// Holds during which other keys are pressed and released, and which end with the keys in any
/// order. `Fixture` is a test with a `recorder` and a `user`.
template <typename Fixture>
class RandomHolds : public Fixture {
  protected:
    using Clock = std::chrono::steady_clock;

    /// How long after the first of its keys went up each hold has ended.
    std::vector<Clock::duration> delays;

    void holdOften(int count, std::chrono::milliseconds timeout) {
        ASSERT_EQ(this->recorder->add(Fixture::hold, 1), platform::noErr);
        for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
            holdOnce(timeout);
        }
        std::ranges::sort(delays);
        testing::Test::RecordProperty("medianMilliseconds",
                                      milliseconds(delays[delays.size() / 2]));
        testing::Test::RecordProperty("maxMilliseconds", milliseconds(delays.back()));
    }

  private:
    static int milliseconds(Clock::duration time) {
        return static_cast<int>(time / std::chrono::milliseconds(1));
    }
    int number(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }

    void holdOnce(std::chrono::milliseconds timeout) {
        auto& person = this->user;
        HotKeyRecorder& hearer = *this->recorder;
        std::vector<std::uint32_t> others{person.aKey, person.shiftKey, person.controlKey};
        std::ranges::shuffle(others, random_);
        std::vector<std::uint32_t> down{person.altKey, person.spaceKey};
        std::optional<Clock::time_point> keyUpTime;
        Clock::time_point endTime;
        hearer.onEvent = [&endTime] { endTime = Clock::now(); };
        this->pressHold();
        ASSERT_TRUE(this->becomes(hearer, "P1"));
        for (int i = 0, count = number(3); i < count; ++i) {
            this->mainQueue.runFor(std::chrono::milliseconds(number(60)));
            person.press(others[static_cast<std::size_t>(i)]);
            if (number(2) == 0) {
                person.release(others[static_cast<std::size_t>(i)]);
            } else {
                down.push_back(others[static_cast<std::size_t>(i)]);
            }
        }
        std::ranges::shuffle(down, random_);
        for (const std::uint32_t key : down) {
            this->mainQueue.runFor(std::chrono::milliseconds(number(20)));
            if (!keyUpTime && (key == person.altKey || key == person.spaceKey)) {
                keyUpTime = Clock::now();
            }
            person.release(key);
        }
        EXPECT_TRUE(this->becomes(hearer, "P1R1", timeout));
        hearer.onEvent = nullptr;
        hearer.events.clear();
        // Another key may have ended the hold before.
        delays.push_back(std::max(endTime - *keyUpTime, Clock::duration::zero()));
    }

    std::mt19937 random_{static_cast<unsigned>(std::random_device()())};
};

}  // namespace tarvik::tests
