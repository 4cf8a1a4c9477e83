// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "tests/linux/system/ApplicationTest.h"
#include "tests/linux/system/MockLogind.h"
#include "tests/linux/system/SilentBus.h"

namespace tarvik::tests {

namespace {

class WakeTest : public ApplicationTest {
  protected:
    /// Announces wakings until the first one is heard. Announcements before the subscription has
    /// reached the bus are lost. Returns the number of announcements.
    int announceUntil(const std::function<bool()>& isHeard) {
        int announced = 0;
        EXPECT_TRUE(runUntil([&] {
            const TimePoint start = clock.now();
            logind.announceSleep(false);
            ++announced;
            runUntil([&] { return isHeard() || clock.now() - start > Seconds(0.2); });
            return isHeard();
        }));
        return announced;
    }

    MockLogind logind{folder / "bus"};
    linuxdesktop::ProcessTaskLauncher taskLauncher;
    std::optional<linuxdesktop::LinuxWorkspace> workspace{
        std::in_place,
        [] { return std::optional<platform::ProcessIdentifier>(); },
        [](linuxdesktop::SettingsPanel) { return true; },
        taskLauncher,
        clock,
        log};
};

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

TEST_F(WakeTest, EveryObserverHearsOfEachWakingAndOfNoFallingAsleep) {
    int first = 0;
    int second = 0;
    workspace->observeDidWake([&] { ++first; });
    workspace->observeDidWake([&] { ++second; });
    const int unheard = announceUntil([&] { return first > 0; });
    constexpr int sleeps = 20;
    for (int number = 0; number < sleeps; ++number) {
        logind.announceSleep(true);
        logind.announceSleep(false);
    }
    EXPECT_TRUE(runUntil([&] { return first > sleeps; }));
    EXPECT_LE(first, unheard + sleeps);
    EXPECT_EQ(second, first);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(WakeTest, WithoutASystemBusTheLogGetsOneLine) {
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    workspace->observeDidWake([] { FAIL(); });
    workspace->observeDidWake([] { FAIL(); });
    EXPECT_TRUE(runUntil([&] { return !log.lines().empty(); }));
    EXPECT_EQ(log.linesWith("waking from sleep goes unnoticed").size(), 1U);
}

TEST_F(WakeTest, ABusThatGoesAwayCostsOneLineAndNoProcessorTime) {
    bool hasWoken = false;
    workspace->observeDidWake([&] { hasWoken = true; });
    announceUntil([&] { return hasWoken; });
    logind.stop();
    EXPECT_TRUE(runUntil([&] { return !log.lines().empty(); }));
    const double before = processorSeconds();
    EXPECT_TRUE(runUntil([&, start = clock.now()] { return clock.now() - start > Seconds(0.3); }));
    EXPECT_LT(processorSeconds() - before, 0.1);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(WakeTest, ABusThatComesBackIsJoinedAgain) {
    int wakings = 0;
    workspace->observeDidWake([&] { ++wakings; });
    announceUntil([&] { return wakings > 0; });
    std::size_t losses = 0;
    // The first absence is longer than all attempts that follow the loss itself.
    for (const Seconds absence : {Seconds(4), Seconds(0)}) {
        logind.stop();
        ++losses;
        EXPECT_TRUE(runUntil([&] { return log.lines().size() == losses; }));
        EXPECT_TRUE(runUntil([&, start = clock.now()] { return clock.now() - start >= absence; }));
        logind.start();
        const int before = wakings;
        announceUntil([&] { return wakings > before; });
        EXPECT_EQ(log.lines().size(), losses);
    }
}

TEST_F(WakeTest, ABusThatNeverAnswersDoesNotHoldUpTheCaller) {
    const SilentBus silent(folder / "silent");
    setenv("DBUS_SYSTEM_BUS_ADDRESS", silent.address().c_str(), 1);
    const TimePoint start = clock.now();
    workspace->observeDidWake([] {});
    QApplication::processEvents();
    workspace.reset();
    EXPECT_LT((clock.now() - start).count(), 1.0);
}

}  // namespace

}  // namespace tarvik::tests
