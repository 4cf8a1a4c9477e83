// SPDX-License-Identifier: MIT

// What accessibility promises with and without the permission, and without another program.
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "tests/conformance/accessibility/AccessibilityWorld.h"
#include "tests/support/Attempts.h"

namespace tarvik::tests {

namespace {

class UnattendedAccessibilityConformance : public testing::TestWithParam<AccessibilityWorldMaker> {
  protected:
    /// Half a second at most, and what a busy machine may need to wake the waiting thread.
    static constexpr Seconds maxDuration{0.55};

    template <typename Call>
    static void expectQuick(Call call) {
        EXPECT_TRUE(isWithin(maxDuration, [&] {
            const auto start = std::chrono::steady_clock::now();
            call();
            return std::chrono::steady_clock::now() - start;
        }));
    }

    std::unique_ptr<AccessibilityWorld> world = GetParam().make();
    platform::Accessibility& service = world->service();
};

TEST_P(UnattendedAccessibilityConformance, TrustIsKnownWithoutThePromptAndWithoutWaiting) {
    expectQuick([&] {
        const bool isTrusted = service.isProcessTrusted();
        EXPECT_EQ(service.isProcessTrustedWithOptions(false), isTrusted);
        EXPECT_EQ(service.isProcessTrusted(), isTrusted);
    });
}

TEST_P(UnattendedAccessibilityConformance, AnElementComesWithSuccessAndOnlyThen) {
    const platform::AXUIElementRef desktop = service.createSystemWide();
    ASSERT_TRUE(desktop);
    expectQuick([&] {
        platform::AXUIElementRef focused;
        const platform::AXError status =
            service.copyAttributeValue(desktop, platform::axFocusedUIElementAttribute, &focused);
        EXPECT_EQ(status == platform::axErrorSuccess, focused != nullptr);
        if (!service.isProcessTrusted()) {
            EXPECT_NE(status, platform::axErrorSuccess);
        }
    });
}

TEST_P(UnattendedAccessibilityConformance, TheDesktopItselfHasNoTextAndNoParent) {
    const platform::AXUIElementRef desktop = service.createSystemWide();
    expectQuick([&] {
        EXPECT_NE(service.setAttributeValue(desktop, platform::axSelectedTextAttribute, "text"),
                  platform::axErrorSuccess);
    });
    expectQuick([&] {
        platform::AXUIElementRef found;
        EXPECT_NE(service.copyAttributeValue(desktop, "AXParent", &found),
                  platform::axErrorSuccess);
        EXPECT_EQ(found, nullptr);
    });
}

INSTANTIATE_TEST_SUITE_P(Worlds, UnattendedAccessibilityConformance, everyAccessibilityWorld(),
                         nameOf);

}  // namespace

}  // namespace tarvik::tests
