// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xinput.h>

#include <array>
#include <map>
#include <memory>

#include "platform/linux/x11/FilterSuspension.h"
#include "platform/linux/x11/XkbProtocol.h"
#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::FilterSuspension;
using linuxdesktop::XcbConnection;
using linuxdesktop::XcbReply;

constexpr std::string_view repeatedLetters = "Hello little bookkeeper 1000 zażółć";
constexpr std::uint32_t slowKeys = XCB_XKB_BOOL_CTRL_SLOW_KEYS;
constexpr std::uint32_t bounceKeys = XCB_XKB_BOOL_CTRL_BOUNCE_KEYS;
constexpr std::uint32_t stickyKeys = XCB_XKB_BOOL_CTRL_STICKY_KEYS;
constexpr std::uint32_t mouseKeys = XCB_XKB_BOOL_CTRL_MOUSE_KEYS;
constexpr std::uint32_t allControls = slowKeys | bounceKeys | stickyKeys | mouseKeys;

std::string controlName(const testing::TestParamInfo<std::uint32_t>& control) {
    constexpr std::array names{"SlowKeys", "BounceKeys", "All"};
    return names[control.index];
}

/// The program in which a user chooses how keys are filtered.
class KeyControls {
  public:
    ~KeyControls() { disable(allControls); }

    void enable(std::uint32_t controls) { set(XCB_XKB_ID_USE_CORE_KBD, controls, controls); }
    void disable(std::uint32_t controls) { set(XCB_XKB_ID_USE_CORE_KBD, controls, 0); }
    void enableOn(std::uint16_t device, std::uint32_t controls) { set(device, controls, controls); }

    /// The enabled controls of every keyboard, by its XInput device.
    std::map<std::uint16_t, std::uint32_t> enabled() const {
        std::map<std::uint16_t, std::uint32_t> found;
        const XcbReply<xcb_input_xi_query_device_reply_t> reply(xcb_input_xi_query_device_reply(
            connection->get(), xcb_input_xi_query_device(connection->get(), XCB_INPUT_DEVICE_ALL),
            nullptr));
        auto devices = xcb_input_xi_query_device_infos_iterator(reply.get());
        for (; devices.rem > 0; xcb_input_xi_device_info_next(&devices)) {
            if (devices.data->type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD ||
                devices.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) {
                found[devices.data->deviceid] = enabledOn(devices.data->deviceid);
            }
        }
        return found;
    }

    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();

  private:
    std::uint32_t enabledOn(std::uint16_t device) const {
        const XcbReply<xcb_xkb_get_controls_reply_t> reply(xcb_xkb_get_controls_reply(
            connection->get(), xcb_xkb_get_controls(connection->get(), device), nullptr));
        return reply->enabledControls & allControls;
    }

    void set(std::uint16_t device, std::uint32_t affected, std::uint32_t enabled) const {
        constexpr std::array<std::uint8_t, 32> repeats{};
        xcb_xkb_set_controls(connection->get(), device, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, affected,
                             enabled, XCB_XKB_CONTROL_CONTROLS_ENABLED, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                             0, 0, 0, 0, 0, repeats.data());
        connection->synchronise();
    }
};

class X11Filters : public InputFixture, public testing::TestWithParam<std::uint32_t> {
  protected:
    KeyControls controls;
    X11Target target{X11Target::Kind::gtk3Entry, mainQueue};
};

TEST_P(X11Filters, LetTypedTextThrough) {
    ASSERT_TRUE(comesToFront(target));
    controls.enable(GetParam());
    const auto before = controls.enabled();
    type(repeatedLetters, target.process());
    EXPECT_TRUE(becomes(target, repeatedLetters));
    EXPECT_EQ(controls.enabled(), before);
}

TEST_P(X11Filters, LetTextThroughThatComesFromTheKeyboardInUse) {
    ASSERT_TRUE(comesToFront(target));
    HotKeyRecorder recorder(input->eventManager());
    ASSERT_EQ(recorder.add(hold, 1), platform::noErr);
    pressHold();
    ASSERT_TRUE(becomes(recorder, "P1"));
    controls.enable(GetParam());
    const auto before = controls.enabled();
    type(repeatedLetters, target.process());
    EXPECT_TRUE(becomes(target, repeatedLetters));
    EXPECT_EQ(controls.enabled(), before);
    releaseHold();
    EXPECT_TRUE(becomes(recorder, "P1R1"));
}

TEST_P(X11Filters, AreBackAfterAKill) {
    controls.enable(GetParam());
    const auto before = controls.enabled();
    std::array<int, 2> pipe{};
    ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        const auto connection = XcbConnection::open().value();
        const FilterSuspension suspension(*connection, connection->testKeyboard());
        connection->synchronise();
        [[maybe_unused]] const auto written = write(pipe[1], "", 1);
        for (;;) {
            pause();
        }
    }
    close(pipe[1]);
    char isSuspended = 1;
    EXPECT_EQ(read(pipe[0], &isSuspended, 1), 1);
    close(pipe[0]);
    auto expected = before;
    for (auto& [device, enabled] : expected) {
        enabled &= ~(slowKeys | bounceKeys);
    }
    EXPECT_EQ(controls.enabled(), expected);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_TRUE(mainQueue.runUntil([&] { return controls.enabled() == before; }));
}

TEST_P(X11Filters, StayAsTheUserHasLeftThemWhenTheProgramEnds) {
    ASSERT_TRUE(comesToFront(target));
    controls.enable(GetParam());
    type("text", target.process());
    EXPECT_TRUE(becomes(target, "text"));
    controls.disable(GetParam());
    const auto before = controls.enabled();
    input.reset();
    EXPECT_EQ(controls.enabled(), before);
}

INSTANTIATE_TEST_SUITE_P(, X11Filters, testing::Values(slowKeys, bounceKeys, allControls),
                         controlName);

using X11FiltersOfOneKeyboard = X11Filters;

// The keys come from the keyboard that filters, and the master keyboard copies its filters.
TEST_P(X11FiltersOfOneKeyboard, StayOnThatKeyboard) {
    ASSERT_TRUE(comesToFront(target));
    controls.enableOn(controls.connection->testKeyboard(), GetParam());
    auto before = controls.enabled();
    type(repeatedLetters, target.process());
    EXPECT_TRUE(becomes(target, repeatedLetters));
    before.erase(controls.connection->keyboard());
    auto after = controls.enabled();
    after.erase(controls.connection->keyboard());
    EXPECT_EQ(after, before);
}

INSTANTIATE_TEST_SUITE_P(, X11FiltersOfOneKeyboard, testing::Values(slowKeys, bounceKeys));

using X11StickyKeys = X11Filters;

TEST_P(X11StickyKeys, DoNotLatchAModifierThatIsLifted) {
    ASSERT_TRUE(comesToFront(target));
    controls.enable(GetParam());
    user->press(X11User::shiftKey);
    type("hello", target.process());
    EXPECT_TRUE(becomes(target, "hello"));
    user->release(X11User::shiftKey);
}

INSTANTIATE_TEST_SUITE_P(, X11StickyKeys, testing::Values(stickyKeys));

}  // namespace

}  // namespace tarvik::tests
