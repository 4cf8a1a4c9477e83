// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/linux/accessibility/AtspiFixture.h"

namespace tarvik::tests {

/// What tells a refusal at once from one that waited.
inline constexpr Seconds atOnce{0.05};
/// All that a write may take, and what it takes a busy machine to wake the thread that waits.
inline constexpr Seconds half = Seconds(0.5) + Seconds(0.05);

/// A service, and a program on the bus that misbehaves in one way.
class FakeProgramFixture : public AtspiFixture {
  protected:
    void SetUp() override { startService(); }

    /// A program of this behaviour; its field holds the text and has its caret at the end, or the
    /// selection.
    void open(const std::string& behaviour, const std::string& text,
              const std::vector<std::string>& more = {}) {
        std::vector<std::string> options{"--behaviour", behaviour, "--text", text};
        options.insert(options.end(), more.begin(), more.end());
        target = openFake(options);
        element = awaitFocus();
    }

    /// The focused element, after it has moved to the honest field of the same program.
    platform::AXUIElementRef focusSecondField() {
        EXPECT_EQ(target->command("second"), "done");
        platform::AXUIElementRef second;
        EXPECT_TRUE(becomesTrue(
            [&] {
                second = focusedElement();
                return second && second != element;
            },
            timeout));
        return second;
    }

    std::string insertions() { return target->command("insertions"); }

    /// Ends the silence of the program; what its field holds when all that follows is done.
    std::string textAfterWaking() {
        EXPECT_EQ(target->command("wake"), "done");
        // The service has heard it when it has served somebody else since.
        const auto other = openFake({});
        EXPECT_EQ(write(awaitFocus(), "text"), platform::axErrorSuccess);
        EXPECT_EQ(target->command("settle"), "done");
        return target->text();
    }

    std::unique_ptr<TargetProcess> target;
    platform::AXUIElementRef element;
};

}  // namespace tarvik::tests
