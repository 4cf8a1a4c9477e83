// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/accessibility/TextWrite.h"
#include "tests/linux/accessibility/AtspiFixture.h"
#include "tests/linux/accessibility/PrivateSession.h"

namespace tarvik::tests {

namespace {

class AtspiBus : public AtspiFixture {
  protected:
    // The environment changes only while no other thread reads it.
    void TearDown() override { service.reset(); }

    void startEverything() {
        session.startBus();
        startService();
        ASSERT_TRUE(
            becomesTrue([this] { return service->isProcessTrustedWithOptions(true); }, timeout));
    }

    bool takesText() {
        const auto target = openFake({});
        return write(awaitFocus(), "text") == platform::axErrorSuccess && target->text() == "text";
    }

    void awaitFirstAnswer(Seconds wait = timeout) {
        const auto isKnown = std::make_shared<std::promise<void>>();
        service->whenFirstKnown([isKnown] { isKnown->set_value(); });
        EXPECT_EQ(isKnown->get_future().wait_for(wait), std::future_status::ready);
    }

    bool isWithoutAccessibility() {
        platform::AXUIElementRef element;
        return copyFocus(&element) == platform::axErrorAPIDisabled;
    }

    PrivateSession session;
};

TEST_F(AtspiBus, WithoutASessionBusNothingIsKnownAndOneLineSaysSo) {
    startService();
    EXPECT_TRUE(becomesTrue([this] { return !log.lines().empty(); }, timeout));
    for (int time = 0; time < 3; ++time) {
        EXPECT_TRUE(isWithoutAccessibility());
        EXPECT_FALSE(service->isProcessTrustedWithOptions(true));
    }
    session.startBus();
    EXPECT_TRUE(becomesTrue([this] { return !isWithoutAccessibility(); }, timeout));
    EXPECT_TRUE(takesText());
    EXPECT_EQ(log.lines().size(), 1U) << log.lines().back();
}

TEST_F(AtspiBus, TrustFollowsTheSwitchOfTheDesktopAndTheKeyboard) {
    session.startBus();
    startService();
    EXPECT_FALSE(service->isProcessTrusted());
    EXPECT_TRUE(becomesTrue([this] { return !isWithoutAccessibility(); }, timeout));
    EXPECT_FALSE(service->isProcessTrusted());
    EXPECT_FALSE(service->isProcessTrustedWithOptions(false));
    EXPECT_FALSE(service->isProcessTrustedWithOptions(true));
    EXPECT_TRUE(becomesTrue([this] { return service->isProcessTrusted(); }, timeout));
    canType = false;
    EXPECT_FALSE(service->isProcessTrusted());
    canType = true;
    EXPECT_TRUE(service->isProcessTrusted());
    session.setEnabled(false);
    EXPECT_TRUE(becomesTrue([this] { return !service->isProcessTrusted(); }, timeout));
}

TEST_F(AtspiBus, WhatIsKnownFirstIsWhatTheDesktopSays) {
    session.startBus();
    session.setEnabled(true);
    startService();
    awaitFirstAnswer();
    EXPECT_TRUE(service->isProcessTrusted());
    // Also when it is asked for late.
    awaitFirstAnswer();
}

TEST_F(AtspiBus, ASwitchThatIsOffIsKnownToBeAndThePromptMovesItWithinASecond) {
    session.startBus();
    startService();
    awaitFirstAnswer();
    EXPECT_FALSE(isWithoutAccessibility());
    EXPECT_FALSE(service->isProcessTrustedWithOptions(true));
    EXPECT_TRUE(becomesTrue([this] { return service->isProcessTrusted(); }, Seconds(1)));
}

TEST_F(AtspiBus, ThatThereIsNoBusIsKnownAtOnce) {
    startService();
    awaitFirstAnswer(Seconds(0.4));
    EXPECT_FALSE(service->isProcessTrusted());
}

TEST_F(AtspiBus, ARegistryThatEndsIsStartedAgain) {
    startEverything();
    EXPECT_TRUE(takesText());
    const pid_t registry = session.ownerOnAccessibilityBus("org.a11y.atspi.Registry");
    const std::size_t before = log.lines().size();
    kill(registry, SIGKILL);
    EXPECT_TRUE(becomesTrue([&] { return log.lines().size() > before; }, timeout));
    EXPECT_TRUE(becomesTrue([this] { return !isWithoutAccessibility(); }, timeout));
    EXPECT_NE(session.ownerOnAccessibilityBus("org.a11y.atspi.Registry"), registry);
    EXPECT_TRUE(takesText());
    EXPECT_EQ(log.lines().size(), before + 1) << log.lines().front();
}

TEST_F(AtspiBus, AnAccessibilityBusThatEndsIsJoinedAgainOnceItIsBack) {
    startEverything();
    const auto before = openFake({});
    const platform::AXUIElementRef element = awaitFocus();
    kill(session.ownerOnAccessibilityBus("org.freedesktop.DBus"), SIGKILL);
    EXPECT_TRUE(becomesTrue([this] { return !log.lines().empty(); }, timeout));
    EXPECT_TRUE(becomesTrue([this] { return !isWithoutAccessibility(); }, timeout));
    EXPECT_EQ(write(element, "text"), platform::axErrorInvalidUIElement);
    EXPECT_TRUE(takesText());
    EXPECT_EQ(log.lines().size(), 1U) << log.lines().back();
}

TEST_F(AtspiBus, AProgramIsNotBlamedForABusThatIsLost) {
    session.startBus();
    auto opened = linuxdesktop::MessageBus::openSession();
    ASSERT_TRUE(opened) << opened.error().localizedDescription;
    const auto bus = std::move(opened).value();
    const auto program = std::make_shared<linuxdesktop::AtspiApplication>(":1.1");
    const auto widget = std::make_shared<linuxdesktop::AtspiElement>(program, "/widget");
    session.killBus();
    std::vector<std::string> reasons;
    const auto toWrite = std::make_shared<linuxdesktop::TextWrite>(
        *bus, widget, "text",
        linuxdesktop::TextWrite::Handlers{
            [&](const std::string& reason) { reasons.push_back(reason); },
            [](bool /*hasArrived*/) { return false; },
            [](const std::function<void()>& task) { task(); }});
    EXPECT_EQ(toWrite->run(std::chrono::steady_clock::now() + std::chrono::seconds(5)),
              platform::axErrorAPIDisabled);
    EXPECT_EQ(reasons, std::vector<std::string>());
    EXPECT_FALSE(widget->isUnreliable());
}

TEST_F(AtspiBus, WhatStartsTheAccessibilityBusMayEndToo) {
    startEverything();
    kill(session.ownerOnSessionBus("org.a11y.Bus"), SIGKILL);
    EXPECT_TRUE(becomesTrue(
        [this] { return !isWithoutAccessibility() && service->isProcessTrustedWithOptions(true); },
        timeout));
    EXPECT_TRUE(takesText());
}

TEST_F(AtspiBus, ASessionBusThatEndsIsJoinedAgainWhenItIsNeededAgain) {
    startEverything();
    session.killBus();
    EXPECT_TRUE(becomesTrue([this] { return !log.lines().empty(); }, timeout));
    session.startBus();
    EXPECT_TRUE(becomesTrue(
        [this] { return !isWithoutAccessibility() && service->isProcessTrustedWithOptions(true); },
        timeout));
    EXPECT_TRUE(takesText());
}

}  // namespace

}  // namespace tarvik::tests
