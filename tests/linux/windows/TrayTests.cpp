// SPDX-License-Identifier: MIT

#include <systemd/sd-bus.h>

#include <QSystemTrayIcon>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "tests/linux/windows/StatusNotifierHost.h"
#include "tests/linux/windows/UserInterfaceTest.h"
#include "tests/linux/windows/X11Tray.h"

namespace tarvik::tests {

namespace {

class TrayTest : public UserInterfaceTest {
  protected:
    std::shared_ptr<platform::StatusItem> makeItem() {
        auto item = userInterface.makeStatusItem();
        item->button()->setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
        return item;
    }

    /// Waits until the log says that there is no tray.
    void waitUntilTrayIsMissed() {
        EXPECT_TRUE(runUntil([&] { return log.linesWith(noTray).size() == 1; }));
    }

    /// Waits until Qt, which shows the icon, has noticed that the tray is gone.
    void waitUntilTrayIsGone() {
        EXPECT_TRUE(runUntil([] { return !QSystemTrayIcon::isSystemTrayAvailable(); }));
    }

    static constexpr std::string_view noTray =
        "TarvikDictate: no tray here — the setup window is the way in";
};

using X11TrayTest = TrayTest;

TEST_F(X11TrayTest, TheItemReturnsToATrayThatWasStartedAnew) {
    const auto item = makeItem();
    X11Tray tray;
    tray.start();
    EXPECT_TRUE(runUntil([&] { return tray.hasIcon(); }));
    tray.stop();
    waitUntilTrayIsGone();
    EXPECT_FALSE(tray.hasIcon());
    tray.start();
    EXPECT_TRUE(runUntil([&] { return tray.hasIcon(); }));
    EXPECT_EQ(log.linesWith(noTray).size(), 0U);
}

TEST_F(X11TrayTest, WithoutASessionBusTheItemIsInTheTrayOfTheScreen) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    X11Tray tray;
    tray.start();
    const auto item = makeItem();
    EXPECT_TRUE(runUntil([&] { return tray.hasIcon(); }));
}

TEST_F(X11TrayTest, AMissingTrayIsLoggedOnceAndTheItemAppearsInOneThatComesLater) {
    const auto item = makeItem();
    waitUntilTrayIsMissed();
    X11Tray tray;
    tray.start();
    EXPECT_TRUE(runUntil([&] { return tray.hasIcon(); }));
    EXPECT_EQ(log.linesWith(noTray).size(), 1U);
}

using NotifierTrayTest = TrayTest;

std::string toolTipTitle(const std::string& owner) {
    sd_bus* bus = nullptr;
    sd_bus_message* reply = nullptr;
    std::string title;
    if (sd_bus_open_user(&bus) >= 0 &&
        sd_bus_get_property(bus, owner.c_str(), "/StatusNotifierItem", "org.kde.StatusNotifierItem",
                            "ToolTip", nullptr, &reply, "(sa(iiay)ss)") >= 0) {
        const char* name = nullptr;
        const char* text = nullptr;
        sd_bus_message_enter_container(reply, 'r', "sa(iiay)ss");
        sd_bus_message_read(reply, "s", &name);
        sd_bus_message_skip(reply, "a(iiay)");
        sd_bus_message_read(reply, "s", &text);
        title = text != nullptr ? text : "";
    }
    sd_bus_message_unref(reply);
    sd_bus_flush_close_unref(bus);
    return title;
}

TEST_F(NotifierTrayTest, TheItemAppearsInAPanelThatComesLaterAndTellsItsState) {
    const auto item = makeItem();
    waitUntilTrayIsMissed();
    const StatusNotifierHost panel;
    EXPECT_TRUE(runUntil([&] { return !panel.item().empty(); }));
    item->button()->setContentTintColor(platform::SystemColor::red);
    std::string title;
    std::thread asking;
    EXPECT_TRUE(runUntil([&] {
        std::atomic<bool> isAnswered = false;
        asking = std::thread([&] {
            title = toolTipTitle(panel.item());
            isAnswered = true;
        });
        EXPECT_TRUE(runUntil([&] { return isAnswered.load(); }));
        asking.join();
        return title == "Tarvik Dictate – recording";
    }));
}

TEST_F(NotifierTrayTest, TheItemReturnsToAPanelThatWasStartedAnew) {
    const auto item = makeItem();
    std::optional<StatusNotifierHost> panel(std::in_place);
    EXPECT_TRUE(runUntil([&] { return !panel->item().empty(); }));
    panel.reset();
    waitUntilTrayIsGone();
    panel.emplace();
    EXPECT_TRUE(runUntil([&] { return !panel->item().empty(); }));
    EXPECT_EQ(log.linesWith(noTray).size(), 0U);
}

}  // namespace

}  // namespace tarvik::tests
