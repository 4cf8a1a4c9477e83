// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

#include "platform/linux/x11/X11Input.h"
#include "tests/linux/x11/ForkedWindow.h"
#include "tests/linux/x11/KeyReader.h"
#include "tests/linux/x11/WindowManager.h"
#include "tests/linux/x11/X11Server.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::X11Input;
using linuxdesktop::XcbConnection;
using linuxdesktop::XcbReply;

/// A hotkey that does not come from the X server. The input still takes the window of this process
/// for the one in front: without a window manager nobody announces the change.
class X11TargetChoice : public testing::Test {
  protected:
    X11TargetChoice() {
        own = std::make_unique<KeyReader>();
        setFocus(own->window());
        input = X11Input::openSession(mainQueue, log, {}, {});
        watcher = XcbConnection::open().value();
        watcher->selectEvents(other.window(), XCB_EVENT_MASK_KEY_PRESS);
        watcher->synchronise();
        setFocus(other.window());
        EXPECT_EQ(input->chooseTarget(), getpid());
    }

    bool isCorrected() {
        return mainQueue.runUntil([&] { return input->isElsewhere(getpid()); });
    }
    void type() { input->type({getpid(), U"abc"}, {}); }
    bool arrivesInOther() {
        int presses = 0;
        const bool arrives = mainQueue.runUntil([&] {
            while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(watcher->get())}) {
                presses += event->response_type == XCB_KEY_PRESS ? 1 : 0;
            }
            return presses == 3;
        });
        return arrives && own->presses() == 0;
    }

    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    RecordingLog log;
    ForkedWindow other;
    std::unique_ptr<KeyReader> own;
    std::unique_ptr<XcbConnection> watcher;
    std::shared_ptr<X11Input> input;
};

TEST_F(X11TargetChoice, IsTheWindowThatTheServerNamesForTextThatComesAtOnce) {
    type();
    EXPECT_TRUE(arrivesInOther());
}

TEST_F(X11TargetChoice, StaysWhenTheUserGoesElsewhere) {
    ASSERT_TRUE(isCorrected());
    setFocus(own->window());
    type();
    EXPECT_TRUE(arrivesInOther());
}

TEST_F(X11TargetChoice, IsTheWindowInFrontAgainAtALaterHotKey) {
    ASSERT_TRUE(isCorrected());
    EXPECT_EQ(input->chooseTarget(), other.process());
    EXPECT_FALSE(input->isElsewhere(other.process()));
}

}  // namespace

}  // namespace tarvik::tests
