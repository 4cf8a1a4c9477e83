// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/linux/x11/FrontWindow.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/support/RealTimeQueue.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::FrontWindow;
using linuxdesktop::XcbConnection;

constexpr std::uint32_t otherProcess = 4711;

/// A server with or without the extension that names processes, and a window of this process.
class X11FrontWindow : public testing::Test {
  protected:
    void start(const std::vector<std::string>& options = {}) {
        server.emplace(mainQueue, options);
        connection = XcbConnection::open().value();
        createWindow();
    }
    void createWindow() {
        window = xcb_generate_id(connection->get());
        xcb_create_window(connection->get(), XCB_COPY_FROM_PARENT, window, connection->root(), 0, 0,
                          1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    }
    void announce(std::uint32_t announced, const std::string& machine) {
        xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, window,
                            connection->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &announced);
        xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, window,
                            connection->atom("WM_CLIENT_MACHINE"), XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(machine.size()), machine.data());
    }
    std::optional<platform::ProcessIdentifier> process() {
        return FrontWindow(*connection, front).processOf(window);
    }
    static std::string thisMachine() {
        std::array<char, 256> name{};
        gethostname(name.data(), name.size() - 1);
        return name.data();
    }

    RealTimeQueue mainQueue;
    std::optional<X11Server> server;
    std::unique_ptr<XcbConnection> connection;
    std::atomic<FrontWindow::Known> front = FrontWindow::Known();
    xcb_window_t window = XCB_NONE;
};

// Programs in process namespaces of their own all announce a small number.
TEST_F(X11FrontWindow, IsOfTheProcessThatIsConnectedWhateverItAnnounces) {
    start();
    announce(otherProcess, thisMachine());
    EXPECT_EQ(process(), getpid());
}

TEST_F(X11FrontWindow, IsOfTheAnnouncedProcessWhereTheServerDoesNotKnow) {
    start({"-extension", "X-Resource"});
    announce(otherProcess, thisMachine());
    EXPECT_EQ(process(), static_cast<platform::ProcessIdentifier>(otherProcess));
}

TEST_F(X11FrontWindow, IsOfNoProcessWhenItsProgramRunsOnAnotherMachine) {
    start({"-extension", "X-Resource"});
    announce(otherProcess, "elsewhere");
    EXPECT_EQ(process(), std::nullopt);
}

TEST_F(X11FrontWindow, IsOfNoProcessWhenItAnnouncesNone) {
    start({"-extension", "X-Resource"});
    announce(0, thisMachine());
    EXPECT_EQ(process(), std::nullopt);
}

// The server knows no process of a client that comes over the network.
TEST_F(X11FrontWindow, IsOfNoProcessWhenItsProgramIsConnectedFromAnotherMachine) {
    start({"-listen", "tcp", "-ac"});
    const std::string display = getenv("DISPLAY");
    setenv("DISPLAY", ("127.0.0.1" + display).c_str(), 1);
    connection = XcbConnection::open().value();
    setenv("DISPLAY", display.c_str(), 1);
    createWindow();
    announce(otherProcess, "elsewhere");
    EXPECT_EQ(process(), std::nullopt);
    announce(otherProcess, thisMachine());
    EXPECT_EQ(process(), static_cast<platform::ProcessIdentifier>(otherProcess));
}

// Its number belongs to a client all the same.
// Such a window of GNOME Shell 48 has the focus of X while the user is in a program of Wayland.
TEST_F(X11FrontWindow, IsNoneWhereTheWindowManagerNamesOneOfItsOwnThatIsNotShown) {
    start();
    const auto name = [&](const char* property, xcb_window_t holder, xcb_window_t named) {
        xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, holder,
                            connection->atom(property), XCB_ATOM_WINDOW, 32, 1, &named);
    };
    const auto manager = window;
    name("_NET_SUPPORTING_WM_CHECK", connection->root(), manager);
    name("_NET_SUPPORTING_WM_CHECK", manager, manager);
    createWindow();
    name("_NET_ACTIVE_WINDOW", connection->root(), window);
    FrontWindow found(*connection, front);
    EXPECT_EQ(found.window(), xcb_window_t{XCB_NONE});
    xcb_map_window(connection->get(), window);
    EXPECT_EQ(found.window(), window);
    const auto program = XcbConnection::open().value();
    const xcb_window_t hidden = xcb_generate_id(program->get());
    xcb_create_window(program->get(), XCB_COPY_FROM_PARENT, hidden, program->root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    program->synchronise();
    name("_NET_ACTIVE_WINDOW", connection->root(), hidden);
    EXPECT_EQ(found.window(), hidden);
}

TEST_F(X11FrontWindow, IsOfNoProcessWhenItDoesNotExist) {
    start();
    window = xcb_generate_id(connection->get());
    EXPECT_EQ(process(), std::nullopt);
}

/// Two windows that are shown, and the time of the server.
class X11Focus : public X11FrontWindow {
  protected:
    void SetUp() override {
        start();
        first = window;
        createWindow();
        for (const xcb_window_t shown : {first, window}) {
            xcb_map_window(connection->get(), shown);
        }
        const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection->get(), connection->root(), XCB_CW_EVENT_MASK,
                                     &events);
    }
    /// Changes a property of the root window; returns the server's event.
    xcb_property_notify_event_t change(const char* property) {
        xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, connection->root(),
                            connection->atom(property), XCB_ATOM_WINDOW, 32, 1, &first);
        xcb_flush(connection->get());
        while (auto* event = xcb_wait_for_event(connection->get())) {
            const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> owner(event,
                                                                                   &std::free);
            if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
                return *reinterpret_cast<xcb_property_notify_event_t*>(event);
            }
        }
        ADD_FAILURE() << "the server has ended";
        return {};
    }
    /// Waits until the server's time has gone on.
    xcb_timestamp_t serverTime() {
        const xcb_timestamp_t now = change("TIME").time;
        while (change("TIME").time == now) {
        }
        return now;
    }
    xcb_window_t focused() { return FrontWindow(*connection, front).focus()->window; }

    xcb_window_t first = XCB_NONE;
};

// The user clicks on a window while text is typed into one behind.
TEST_F(X11Focus, GoesWhereTheUserHasAskedForItBeforeItWasLent) {
    FrontWindow lender(*connection, front);
    EXPECT_TRUE(lender.handleProperty(change("_NET_ACTIVE_WINDOW")));
    const xcb_timestamp_t click = serverTime();
    lender.setFocus({window});
    EXPECT_EQ(focused(), window);
    lender.setFocus({first});
    EXPECT_EQ(focused(), first);
    xcb_set_input_focus(connection->get(), XCB_INPUT_FOCUS_PARENT, window, click);
    EXPECT_EQ(focused(), window);
}

TEST_F(X11Focus, IsLentAlsoAfterAProgramHasTakenItUnannounced) {
    FrontWindow lender(*connection, front);
    EXPECT_TRUE(lender.handleProperty(change("_NET_ACTIVE_WINDOW")));
    serverTime();
    xcb_set_input_focus(connection->get(), XCB_INPUT_FOCUS_PARENT, first, XCB_CURRENT_TIME);
    lender.setFocus({window});
    EXPECT_EQ(focused(), window);
}

}  // namespace

}  // namespace tarvik::tests
