// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "tests/linux/input/DesktopInputFixture.h"

namespace tarvik::tests {

/// The input of a Wayland session, and `User` at its keyboard. The keyboard is plugged in first.
template <typename User>
class SessionFixture : public DesktopInputFixture {
  protected:
    explicit SessionFixture(
        std::shared_ptr<linuxdesktop::AccessibilityWorker> accessibilityWorker = nullptr)
        : DesktopInputFixture(std::move(accessibilityWorker)) {
        openInput();
    }
    ~SessionFixture() { input.reset(); }

    void pressHold() {
        user.press(User::altKey);
        user.press(User::spaceKey);
    }
    void releaseHold() {
        user.release(User::spaceKey);
        user.release(User::altKey);
    }

    /// Presses the hotkey 20 times. Half of the presses are heard within 30 ms.
    void expectPressesHeardAtOnce(HotKeyRecorder& recorder) {
        using std::chrono::steady_clock;
        ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
        std::vector<steady_clock::duration> times;
        for (int i = 0; i < 20; ++i) {
            recorder.events.clear();
            user.press(User::altKey);
            const auto start = steady_clock::now();
            user.press(User::spaceKey);
            ASSERT_TRUE(becomes(recorder, "P1"));
            times.push_back(steady_clock::now() - start);
            releaseHold();
            ASSERT_TRUE(becomes(recorder, "P1R1"));
        }
        std::ranges::sort(times);
        EXPECT_LT(times[10], std::chrono::milliseconds(30));
        testing::Test::RecordProperty("medianMicroseconds",
                                      static_cast<int>(times[10] / std::chrono::microseconds(1)));
    }

    User user;
};

}  // namespace tarvik::tests
