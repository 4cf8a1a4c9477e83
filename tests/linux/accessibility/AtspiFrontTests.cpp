// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "platform/linux/accessibility/AtspiFront.h"
#include "tests/linux/accessibility/PrivateSession.h"
#include "tests/linux/accessibility/TargetProcess.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::AccessibilityWorker;

// On the session bus of the environment.
class AtspiFrontOfASession : public testing::Test {
  protected:
    static constexpr Seconds timeout{10};

    void startWorker() {
        worker = std::make_shared<AccessibilityWorker>(log);
        front = std::make_unique<linuxdesktop::AtspiFront>(
            std::shared_ptr<const linuxdesktop::AccessibilityState>(worker, &worker->state()));
    }
    bool becomes(std::optional<platform::ProcessIdentifier> process) {
        const bool holds =
            becomesTrue([&] { return front->frontmostProcess() == process; }, timeout);
        EXPECT_EQ(front->frontmostProcess(), process);
        return holds;
    }

    RecordingLog log;
    std::shared_ptr<AccessibilityWorker> worker;
    std::unique_ptr<linuxdesktop::AtspiFront> front;
};

TEST_F(AtspiFrontOfASession, IsTheProgramWhoseWindowWasActiveBefore) {
    const TargetProcess target("gtk3_target.py", {});
    startWorker();
    EXPECT_TRUE(becomes(target.identifier()));
}

// On a session bus of its own.
class AtspiFront : public AtspiFrontOfASession {
  protected:
    // The environment changes only while no other thread reads it.
    void TearDown() override { worker.reset(); }

    void start() {
        session.startBus();
        startConnectedWorker();
    }
    void startConnectedWorker() {
        startWorker();
        ASSERT_TRUE(becomesTrue([this] { return worker->state().isConnected.load(); }, timeout));
    }

    PrivateSession session;
};

TEST_F(AtspiFront, IsTheProgramThatActivatedItsWindowLast) {
    start();
    EXPECT_EQ(front->frontmostProcess(), std::nullopt);
    TargetProcess first("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(first.identifier()));
    TargetProcess second("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(second.identifier()));
    // The report of the window that was in front before comes late.
    EXPECT_EQ(first.command("deactivate"), "done");
    EXPECT_EQ(first.command("settle"), "done");
    EXPECT_TRUE(becomes(second.identifier()));
    EXPECT_EQ(first.command("activate"), "done");
    EXPECT_TRUE(becomes(first.identifier()));
}

TEST_F(AtspiFront, IsNoneSinceATimeAtWhichTheLastReportHadCome) {
    start();
    const auto before = std::chrono::steady_clock::now();
    TargetProcess target("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(target.identifier()));
    EXPECT_EQ(front->frontmostProcessSince(before), target.identifier());
    const auto later = std::chrono::steady_clock::now();
    EXPECT_EQ(front->frontmostProcessSince(later), std::nullopt);
    EXPECT_EQ(target.command("activate"), "done");
    EXPECT_TRUE(becomesTrue(
        [&] { return front->frontmostProcessSince(later) == target.identifier(); }, timeout));
}

// A text for a window behind gives that window the keyboard for a moment. The program of the window
// may report both changes after the other program has reported its own.
TEST_F(AtspiFront, IsTheProgramThatHasTheKeyboardAgainBeforeTheOtherReportsItsTurn) {
    start();
    TargetProcess first("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(first.identifier()));
    EXPECT_EQ(first.command("deactivate"), "done");
    EXPECT_TRUE(becomes(std::nullopt));
    const TargetProcess second("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(second.identifier()));
    EXPECT_EQ(first.command("activate"), "done");
    EXPECT_TRUE(becomes(first.identifier()));
    EXPECT_EQ(first.command("deactivate"), "done");
    EXPECT_TRUE(becomes(second.identifier()));
}

TEST_F(AtspiFront, IsNoneWhileNoProgramReportsAnActiveWindow) {
    start();
    TargetProcess target("fake_target.py", {"--window"});
    EXPECT_TRUE(becomes(target.identifier()));
    EXPECT_EQ(target.command("deactivate"), "done");
    EXPECT_TRUE(becomes(std::nullopt));
    EXPECT_EQ(target.command("activate"), "done");
    EXPECT_TRUE(becomes(target.identifier()));
    target.kill();
    EXPECT_TRUE(becomes(std::nullopt));
}

// GTK drops the events that come before it knows who listens.
TEST_F(AtspiFront, IsTheProgramWhoseActivationNobodyHeard) {
    session.startBus();
    const TargetProcess registry("slow_registry.py", {});
    startConnectedWorker();
    const TargetProcess target("fake_target.py", {"--unheard-activation"});
    EXPECT_TRUE(becomes(target.identifier()));
}

class AtspiFrontOfAToolkit : public AtspiFront, public testing::WithParamInterface<const char*> {};

TEST_P(AtspiFrontOfAToolkit, IsTheProgramWhoseActivationNobodyHeard) {
    session.startBus();
    session.leadProgramsHere();
    const TargetProcess registry("slow_registry.py", {});
    startConnectedWorker();
    const TargetProcess target(GetParam(), {});
    EXPECT_TRUE(becomes(target.identifier()));
}

INSTANTIATE_TEST_SUITE_P(Atspi, AtspiFrontOfAToolkit,
                         testing::Values("gtk3_target.py", "gtk4_target.py"),
                         [](const auto& toolkit) { return std::string(toolkit.param, 4); });

TEST_F(AtspiFront, IsTheProgramThatIsBusyWhileItStarts) {
    start();
    const TargetProcess target("fake_target.py", {"--unheard-activation", "--slow-window"});
    EXPECT_TRUE(becomes(target.identifier()));
}

// Two programs whose windows both count as active: the first one has not reported its end yet, and
// the second one was found by a query.
class AtspiFrontOfTwo : public AtspiFront {
  protected:
    void SetUp() override {
        start();
        first.emplace("fake_target.py", std::vector<std::string>{"--window"});
        EXPECT_TRUE(becomes(first->identifier()));
        second.emplace("fake_target.py", std::vector<std::string>{"--unheard-activation"});
        EXPECT_TRUE(
            becomesTrue([this] { return second->command("examinations") != "0"; }, timeout));
    }

    std::optional<TargetProcess> first;
    std::optional<TargetProcess> second;
};

TEST_F(AtspiFrontOfTwo, IsTheSecondOnceTheFirstReportsItsEnd) {
    EXPECT_EQ(first->command("deactivate"), "done");
    EXPECT_TRUE(becomes(second->identifier()));
}

TEST_F(AtspiFrontOfTwo, IsTheSecondOnceTheFirstProgramHasEnded) {
    first->kill();
    EXPECT_TRUE(becomes(second->identifier()));
}

TEST_F(AtspiFrontOfTwo, IsNoneWhereTheSecondHasReportedItsEndBefore) {
    EXPECT_EQ(second->command("deactivate"), "done");
    EXPECT_EQ(first->command("deactivate"), "done");
    EXPECT_TRUE(becomes(std::nullopt));
}

TEST_F(AtspiFront, IsNoneWithoutABusAndIsKnownAgainWithTheNextOne) {
    startWorker();
    EXPECT_EQ(front->frontmostProcess(), std::nullopt);
    session.startBus();
    worker->connect();
    ASSERT_TRUE(becomesTrue([this] { return worker->state().isConnected.load(); }, timeout));
    auto target =
        std::make_unique<TargetProcess>("fake_target.py", std::vector<std::string>{"--window"});
    EXPECT_TRUE(becomes(target->identifier()));
    session.killBus();
    EXPECT_TRUE(becomes(std::nullopt));
}

}  // namespace

}  // namespace tarvik::tests
