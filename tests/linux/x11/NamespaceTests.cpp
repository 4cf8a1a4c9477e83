// SPDX-License-Identifier: MIT

#include <optional>

#include "platform/linux/x11/XcbConnection.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/WindowManager.h"

namespace tarvik::tests {

namespace {

/// The command that runs a program as process 1 of a namespace of its own; empty where the system
/// does not allow that.
std::vector<std::string> namespaceWrapper() {
    for (const std::vector<std::string>& rights :
         {std::vector<std::string>{}, std::vector<std::string>{"--user", "--map-root-user"}}) {
        std::vector<std::string> wrapper{"unshare", "--pid", "--fork", "--mount-proc",
                                         "--kill-child"};
        wrapper.insert(wrapper.end(), rights.begin(), rights.end());
        std::vector<std::string> probe = wrapper;
        probe.emplace_back("true");
        TestProcess::Options options;
        options.errorOutput = TestProcess::ErrorOutput::dropped;
        if (TestProcess::run(probe, options).status == 0) {
            return wrapper;
        }
    }
    return {};
}

/// Programs of which two have process namespaces of their own, as in sandboxes.
class X11Namespaces : public InputFixture, public testing::Test {
  protected:
    void SetUp() override {
        const std::vector<std::string> wrapper = namespaceWrapper();
        if (wrapper.empty()) {
            GTEST_SKIP() << "process namespaces are not allowed here";
        }
        first.emplace(X11Target::Kind::gtk3Text, mainQueue, wrapper);
        firstWindow = windowInFront(*first);
        second.emplace(X11Target::Kind::gtk3Text, mainQueue, wrapper);
        secondWindow = windowInFront(*second);
        ASSERT_EQ(announcedBy(firstWindow), 1U);
        ASSERT_EQ(announcedBy(secondWindow), 1U);
        ASSERT_NE(first->process(), second->process());
    }

    xcb_window_t windowInFront(const X11Target& target) {
        EXPECT_TRUE(comesToFront(target));
        return frontWindow();
    }
    std::optional<std::uint32_t> announcedBy(xcb_window_t window) {
        return connection->firstOfProperty(window, announced, XCB_ATOM_CARDINAL);
    }
    void announce(xcb_window_t window, platform::ProcessIdentifier process) {
        xcb_change_property(connection->get(), XCB_PROP_MODE_REPLACE, window, announced,
                            XCB_ATOM_CARDINAL, 32, 1, &process);
        connection->synchronise();
    }

    std::unique_ptr<linuxdesktop::XcbConnection> connection =
        linuxdesktop::XcbConnection::open().value();
    const xcb_atom_t announced = connection->atom("_NET_WM_PID");
    std::optional<X11Target> first;
    std::optional<X11Target> second;
    xcb_window_t firstWindow = XCB_NONE;
    xcb_window_t secondWindow = XCB_NONE;
};

TEST_F(X11Namespaces, KeepTheTextsOfTwoProgramsThatAnnounceProcess1Apart) {
    for (const X11Target* target : {&*first, &*second}) {
        bringToFront(target->process());
        EXPECT_TRUE(comesToFront(*target));
    }
    type("for the first, ąć", first->process());
    type("for the second, ж", second->process());
    EXPECT_TRUE(becomes(*first, "for the first, ąć"));
    EXPECT_TRUE(becomes(*second, "for the second, ж"));
    type("for nobody", 1);
    EXPECT_TRUE(mainQueue.runUntil(
        [&] { return log.hasLineWith("process 1 has no window (10 characters)"); }));
    EXPECT_TRUE(becomes(*first, "for the first, ąć"));
    EXPECT_TRUE(becomes(*second, "for the second, ж"));
}

TEST_F(X11Namespaces, KeepTheTextOfAProgramOutsideApartThatHasTheNumberOfOneInside) {
    const X11Target third(X11Target::Kind::gtk3Text, mainQueue);
    announce(firstWindow, third.process());
    const std::vector<const X11Target*> targets{&*first, &*second, &third};
    std::string forThird;
    std::string forFirst;
    for (const X11Target* front : targets) {
        bringToFront(front->process());
        ASSERT_TRUE(comesToFront(*front));
        type("for the third, ж. ", third.process());
        type("for the first, ж. ", first->process());
        EXPECT_TRUE(becomes(third, forThird += "for the third, ж. "));
        EXPECT_TRUE(becomes(*first, forFirst += "for the first, ж. "));
    }
    EXPECT_TRUE(becomes(*second, ""));
}

}  // namespace

}  // namespace tarvik::tests
