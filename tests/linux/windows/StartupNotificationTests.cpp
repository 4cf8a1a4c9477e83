// SPDX-License-Identifier: MIT

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/windows/QtWindow.h"
#include "platform/linux/windows/StartupNotification.h"
#include "platform/linux/windows/X11Server.h"
#include "tests/linux/windows/UserInterfaceTest.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::StartupNotification;

void endStartup(const char* id) {
    const StartupNotification notification(id);
}

/// Sees the messages that the desktop gets from an application that is brought forward.
class X11StartupTest : public UserInterfaceTest {
  protected:
    using Event = linuxdesktop::X11Reply<xcb_generic_event_t>;

    X11StartupTest() : desktop_(xcb_connect(nullptr, nullptr)) {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(desktop_)).data->root;
        const std::uint32_t events =
            XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(desktop_, root, XCB_CW_EVENT_MASK, &events);
        // The reply to a later request shows that the server has taken the mask.
        linuxdesktop::x11Atom(desktop_, "MANAGER");
    }
    ~X11StartupTest() override { xcb_disconnect(desktop_); }

    xcb_atom_t atom(const char* name) { return linuxdesktop::x11Atom(desktop_, name); }

    /// The next message of one of `types`; waits for the message.
    std::optional<xcb_client_message_event_t> nextMessage(const std::vector<xcb_atom_t>& types) {
        std::optional<xcb_client_message_event_t> found;
        EXPECT_TRUE(runUntil([&] {
            while (!found) {
                const Event event(xcb_poll_for_event(desktop_));
                if (!event) {
                    break;
                }
                const auto& message = reinterpret_cast<xcb_client_message_event_t&>(*event);
                if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE &&
                    std::find(types.begin(), types.end(), message.type) != types.end()) {
                    found = message;
                }
            }
            return found.has_value();
        }));
        return found;
    }

    /// The next whole startup message, put together from its pieces.
    std::string nextStartupMessage() {
        const std::vector<xcb_atom_t> types = {atom("_NET_STARTUP_INFO_BEGIN"),
                                               atom("_NET_STARTUP_INFO")};
        std::string text;
        while (text.find('\0') == std::string::npos) {
            const auto piece = nextMessage(types);
            if (!piece) {
                return text;
            }
            EXPECT_EQ(piece->type, types[text.empty() ? 0 : 1]);
            text.append(reinterpret_cast<const char*>(piece->data.data8), 20);
        }
        return text.substr(0, text.find('\0'));
    }

    /// The next request for the keyboard that comes in the name of the user.
    std::optional<xcb_client_message_event_t> nextRequestOfTheUser() {
        std::optional<xcb_client_message_event_t> request;
        // Qt sends requests in the name of the application as well.
        do {
            request = nextMessage({atom("_NET_ACTIVE_WINDOW")});
        } while (request && request->data.data32[0] != 2);
        return request;
    }

    /// Runs the application with a delegate that calls `onReopening` when the user starts it again.
    /// Returns the request for the keyboard to which the call leads.
    std::optional<xcb_client_message_event_t> requestOnReopening(
        std::function<void()> onReopening) {
        application.setDelegate(std::make_shared<Delegate>(std::move(onReopening)));
        application.reopen("panel_TIME98765");
        std::optional<xcb_client_message_event_t> request;
        mainQueue.async([&] {
            request = nextRequestOfTheUser();
            EXPECT_EQ(nextStartupMessage(), "remove: ID=\"panel_TIME98765\"");
            application.terminate();
        });
        EXPECT_EQ(application.run(), 0);
        return request;
    }

    std::shared_ptr<platform::Window> makeWindow() {
        return userInterface.makeWindow({.contentSize = {300, 200}});
    }
    static xcb_window_t numberOf(platform::Window& window) {
        return static_cast<xcb_window_t>(
            dynamic_cast<linuxdesktop::QtWindow&>(window).widget().winId());
    }

  private:
    class Delegate final : public platform::ApplicationDelegate {
      public:
        explicit Delegate(std::function<void()> onReopening)
            : onReopening_(std::move(onReopening)) {}
        void applicationDidFinishLaunching(const platform::LaunchNotification&) override {}
        bool applicationShouldHandleReopen(bool) override {
            onReopening_();
            return true;
        }
        void applicationShouldPerform(platform::ApplicationAction) override {}
        void applicationShouldTerminate(std::function<void()> onReady) override { onReady(); }

      private:
        std::function<void()> onReopening_;
    };

    xcb_connection_t* desktop_;
};

TEST_F(X11StartupTest, TheDesktopHearsThatTheStartIsOver) {
    endStartup("a \"panel\" \\ with a long name-1234-host_TIME98765");
    EXPECT_EQ(nextStartupMessage(),
              "remove: ID=\"a \\\"panel\\\" \\\\ with a long name-1234-host_TIME98765\"");
    // The text fills one piece exactly, and its zero byte takes a second piece.
    endStartup("1234567");
    EXPECT_EQ(nextStartupMessage(), "remove: ID=\"1234567\"");
    endStartup("");
    endStartup("next");
    EXPECT_EQ(nextStartupMessage(), "remove: ID=\"next\"");
}

TEST_F(X11StartupTest, AReopenedApplicationAsksForTheKeyboardAtTheTimeOfTheUsersAction) {
    const auto window = makeWindow();
    window->show();
    const auto request = requestOnReopening([&] { application.activate(); });
    ASSERT_TRUE(request);
    EXPECT_EQ(request->window, numberOf(*window));
    EXPECT_EQ(request->data.data32[1], 98765U);
}

TEST_F(X11StartupTest, SoDoesAWindowThatComesUpOnlyThen) {
    const auto window = makeWindow();
    const auto request = requestOnReopening([&] {
        application.activate();
        window->show();
        window->orderFrontRegardless();
    });
    ASSERT_TRUE(request);
    EXPECT_EQ(request->window, numberOf(*window));
    EXPECT_EQ(request->data.data32[1], 98765U);
}

TEST_F(X11StartupTest, AWindowForWhichNobodyAskedAsksForNothing) {
    const auto window = makeWindow();
    window->show();
    window->orderFrontRegardless();
    application.activate();
    application.activateIgnoringOtherApps();
    // Messages keep their order, so a request would come before this one.
    endStartup("marker");
    const auto first = nextMessage({atom("_NET_ACTIVE_WINDOW"), atom("_NET_STARTUP_INFO_BEGIN")});
    ASSERT_TRUE(first);
    EXPECT_EQ(first->type, atom("_NET_STARTUP_INFO_BEGIN"));
}

using StartupNotificationTest = UserInterfaceTest;

TEST_F(StartupNotificationTest, AWaylandTokenIsThereForTheWindowThatItsUserAskedForAndNoLonger) {
    class Delegate final : public platform::ApplicationDelegate {
      public:
        explicit Delegate(platform::Application& application) : application_(application) {}
        void applicationDidFinishLaunching(const platform::LaunchNotification&) override {}
        bool applicationShouldHandleReopen(bool) override {
            token = qgetenv("XDG_ACTIVATION_TOKEN").toStdString();
            application_.terminate();
            return true;
        }
        void applicationShouldPerform(platform::ApplicationAction) override {}
        void applicationShouldTerminate(std::function<void()> onReady) override { onReady(); }

        std::string token;

      private:
        platform::Application& application_;
    };
    const auto delegate = std::make_shared<Delegate>(application);
    application.setDelegate(delegate);
    application.reopen("token");
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(delegate->token, "token");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

TEST_F(StartupNotificationTest, TheTimeIsWhatFollowsTheLastMark) {
    EXPECT_EQ(StartupNotification::timeIn("panel-1234-host_TIME98765"), 98765U);
    EXPECT_EQ(StartupNotification::timeIn("a_TIME1_TIME4294967295"), 4294967295U);
    for (const char* id : {"", "panel", "panel_TIME", "panel_TIME12x", "panel_TIME4294967296"}) {
        EXPECT_EQ(StartupNotification::timeIn(id), 0U) << id;
    }
}

}  // namespace

}  // namespace tarvik::tests
