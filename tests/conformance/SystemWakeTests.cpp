#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>

#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "tests/conformance/SystemLinuxTest.h"
#include "tests/conformance/SystemProcess.h"

namespace tarvik::conformance {

namespace {

class WakeTest : public SystemLinuxTest {
  protected:
    WakeTest() {
        std::filesystem::create_directory(socket.parent_path());
        startBus();
        startLoginManager();
    }
    ~WakeTest() override { unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    void startBus() {
        const std::string address = "unix:path=" + socket.string();
        systemBus.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork",
                                                   "--nopidfile", "--print-address=1",
                                                   "--address=" + address});
        systemBus->readLine();
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
    }
    void startLoginManager() {
        loginManager.emplace(std::vector<std::string>{"/usr/bin/python3", "-m", "dbusmock",
                                                      "--system", "--template", "logind"});
    }

    /// Has the login manager announce that the machine goes to sleep or has woken; waits until it
    /// is there and has done so.
    void announceSleep(bool isGoingToSleep) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        sd_bus* bus = nullptr;
        ASSERT_GE(sd_bus_open_system(&bus), 0);
        int result = -1;
        while (result < 0 && std::chrono::steady_clock::now() < deadline) {
            result =
                sd_bus_call_method(bus, "org.freedesktop.login1", "/org/freedesktop/login1",
                                   "org.freedesktop.DBus.Mock", "EmitSignal", nullptr, nullptr,
                                   "sssav", "org.freedesktop.login1.Manager", "PrepareForSleep",
                                   "b", 1, "b", static_cast<int>(isGoingToSleep));
        }
        sd_bus_flush_close_unref(bus);
        ASSERT_GE(result, 0);
    }

    /// Announces wakings until the first one is heard, for those before the subscription has
    /// reached the bus are not; how many it took.
    int announceUntil(const std::function<bool()>& isHeard) {
        int announced = 0;
        EXPECT_TRUE(runUntil([&] {
            const TimePoint start = clock.now();
            announceSleep(false);
            ++announced;
            runUntil([&] { return isHeard() || clock.now() - start > Seconds(0.2); });
            return isHeard();
        }));
        return announced;
    }

    const std::filesystem::path socket = folder / "bus/system_bus_socket";
    std::optional<SystemProcess> systemBus;
    std::optional<SystemProcess> loginManager;
    linuxdesktop::ProcessTaskLauncher taskLauncher;
    std::optional<linuxdesktop::LinuxWorkspace> workspace{
        std::in_place, [] { return std::optional<platform::ProcessIdentifier>(); }, taskLauncher,
        clock, log};
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
        announceSleep(true);
        announceSleep(false);
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
    loginManager.reset();
    systemBus.reset();
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
    // The first absence is longer than the attempts that need no sign of the bus.
    for (const Seconds absence : {Seconds(4), Seconds(0)}) {
        loginManager.reset();
        systemBus.reset();
        std::filesystem::remove(socket);
        ++losses;
        EXPECT_TRUE(runUntil([&] { return log.lines().size() == losses; }));
        EXPECT_TRUE(runUntil([&, start = clock.now()] { return clock.now() - start >= absence; }));
        startBus();
        startLoginManager();
        const int before = wakings;
        announceUntil([&] { return wakings > before; });
        EXPECT_EQ(log.lines().size(), losses);
    }
}

TEST_F(WakeTest, ABusThatNeverAnswersDoesNotHoldUpTheCaller) {
    // The kernel takes the connection; the server never looks at it.
    SystemProcess silent({"python3", "-c",
                          "import socket,sys,time\n"
                          "s=socket.socket(socket.AF_UNIX)\n"
                          "s.bind(sys.argv[1])\ns.listen(8)\nprint('ready',flush=True)\n"
                          "time.sleep(600)\n",
                          folder / "silent"});
    EXPECT_EQ(silent.readLine(), "ready");
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + (folder / "silent").string()).c_str(), 1);
    const TimePoint start = clock.now();
    workspace->observeDidWake([] {});
    QApplication::processEvents();
    workspace.reset();
    EXPECT_LT((clock.now() - start).count(), 1.0);
}

}  // namespace

}  // namespace tarvik::conformance
