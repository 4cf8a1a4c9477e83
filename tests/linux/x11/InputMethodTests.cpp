// SPDX-License-Identifier: MIT

#include <xkbcommon/xkbcommon-keysyms.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux/x11/Keyboard.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/X11Server.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::Keyboard;
using linuxdesktop::XcbConnection;
using linuxdesktop::XcbReply;

constexpr xcb_keycode_t spareKey = 248;

/// A program that announces itself as an input method, and composes nothing.
class AnnouncedMethod {
  public:
    explicit AnnouncedMethod(std::string_view name = "@server=test") {
        const xcb_atom_t server = connection->atom(name);
        const xcb_window_t window = xcb_generate_id(connection->get());
        xcb_create_window(connection->get(), XCB_COPY_FROM_PARENT, window, connection->root(), 0, 0,
                          1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(connection->get(), window, server, XCB_CURRENT_TIME);
        xcb_change_property(connection->get(), XCB_PROP_MODE_APPEND, connection->root(),
                            connection->atom("XIM_SERVERS"), XCB_ATOM_ATOM, 32, 1, &server);
        connection->synchronise();
    }

    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
};

class X11InputMethod : public testing::Test {
  protected:
    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    X11User user;
    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
    Keyboard keyboard{*connection};

    /// Makes a key one of the third modifier.
    void bindThirdModifier(xcb_keycode_t key, std::uint32_t symbol) {
        user.setSymbol(key, symbol);
        const XcbReply<xcb_get_modifier_mapping_reply_t> old(xcb_get_modifier_mapping_reply(
            connection->get(), xcb_get_modifier_mapping(connection->get()), nullptr));
        const std::size_t each = old->keycodes_per_modifier;
        const auto* codes = xcb_get_modifier_mapping_keycodes(old.get());
        std::vector<xcb_keycode_t> changed(codes, codes + 8 * each);
        changed[XCB_MAP_INDEX_3 * each] = key;
        const XcbReply<xcb_set_modifier_mapping_reply_t> reply(xcb_set_modifier_mapping_reply(
            connection->get(),
            xcb_set_modifier_mapping(connection->get(), old->keycodes_per_modifier, changed.data()),
            nullptr));
        ASSERT_TRUE(reply);
        ASSERT_EQ(reply->status, XCB_MAPPING_STATUS_SUCCESS);
    }

    std::uint8_t bypass() {
        keyboard.reread();
        keyboard.refresh();
        return keyboard.bypassMask();
    }
};

TEST_F(X11InputMethod, IsBypassedWhileItRuns) {
    EXPECT_EQ(bypass(), 0);
    EXPECT_FALSE(keyboard.hasInputMethod());
    {
        const AnnouncedMethod method;
        EXPECT_EQ(bypass(), XCB_MOD_MASK_3);
        EXPECT_TRUE(keyboard.hasInputMethod());
    }
    // The list of input methods stays as it was, as after a kill.
    user.isDown(X11User::spaceKey);
    EXPECT_EQ(bypass(), 0);
    EXPECT_FALSE(keyboard.hasInputMethod());
}

// Its engines compose from the letters of the layout, also with the modifier.
TEST_F(X11InputMethod, GetsNoLetterOfTheLayoutWhereItIsIBus) {
    keyboard.reread();
    EXPECT_TRUE(keyboard.strokeFor(U'a', 0, {}));
    keyboard.remapKeys({U'é'}, {});
    const AnnouncedMethod method("@server=ibus");
    keyboard.refresh();
    EXPECT_FALSE(keyboard.strokeFor(U'a', 0, {}));
    keyboard.remapKeys({U'a'}, {});
    // Nothing is forgotten of what was remapped before.
    keyboard.reread();
    EXPECT_TRUE(keyboard.strokeFor(U'é', 0, {}));
    const auto stroke = keyboard.strokeFor(U'a', 0, {});
    ASSERT_TRUE(stroke);
    EXPECT_EQ(user.symbol(stroke->key), 0x01000061U);
}

TEST_F(X11InputMethod, IsBypassedWhereTheModifierOnlyChoosesALevel) {
    const AnnouncedMethod method;
    bindThirdModifier(spareKey, XKB_KEY_ISO_Level5_Shift);
    EXPECT_EQ(bypass(), XCB_MOD_MASK_3);
}

TEST_F(X11InputMethod, IsNotBypassedWhereTheModifierStandsForAShortcut) {
    const AnnouncedMethod method;
    bindThirdModifier(spareKey, XKB_KEY_Hyper_L);
    EXPECT_EQ(bypass(), 0);
    EXPECT_TRUE(keyboard.hasInputMethod());
}

TEST_F(X11InputMethod, IsNotBypassedWhereALayoutUsesTheModifier) {
    const AnnouncedMethod method;
    InputFixture::setLayout({"de", "-variant", "neo"});
    EXPECT_EQ(bypass(), 0);
}

class X11BypassedTyping : public InputFixture, public testing::Test {};

TEST_F(X11BypassedTyping, LocksTheModifierForTheKeysAlone) {
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const AnnouncedMethod method;
    user->lock(XCB_MOD_MASK_LOCK);
    type("Mixed Case żółć", target.process());
    EXPECT_TRUE(becomes(target, "Mixed Case żółć"));
    EXPECT_TRUE(user->isLocked(XCB_MOD_MASK_LOCK));
    EXPECT_FALSE(user->isLocked(XCB_MOD_MASK_3));
}

// Each key on its own would take 12 ms, so the text would take 12 s.
TEST_F(X11BypassedTyping, WaitsForNoSingleKeyInAProgramOfTheXLibrary) {
    const X11Target target(X11Target::Kind::terminal, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const AnnouncedMethod method;
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    const auto start = std::chrono::steady_clock::now();
    type(text, target.process());
    EXPECT_TRUE(becomes(target, text));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(12));
}

TEST_F(X11BypassedTyping, LetsOtherTextsPassWhileAProgramReadsNothing) {
    const X11Target fast(X11Target::Kind::gtk3Entry, mainQueue);
    const X11Target slow(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(slow));
    const AnnouncedMethod method;
    std::string forFast;
    std::string forSlow;
    for (const std::string text : {"many keys", "1"}) {
        slow.hang();
        type(text, slow.process());
        type(text, fast.process());
        EXPECT_TRUE(becomes(fast, forFast += text));
        slow.goOn();
        EXPECT_TRUE(becomes(slow, forSlow += text));
    }
}

// The user's own keys would go to the window that has been brought to the front.
TEST_F(X11BypassedTyping, GivesTheFocusBackWhileAProgramBroughtToTheFrontReadsNothing) {
    const X11Target slow(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(slow));
    moveFrontWindowAway();
    const X11Target fast(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(fast));
    const AnnouncedMethod method;
    slow.hang();
    type("many keys", slow.process());
    type("one", fast.process());
    EXPECT_TRUE(becomes(fast, "one"));
    EXPECT_TRUE(comesToFront(fast));
    slow.goOn();
    EXPECT_TRUE(becomes(slow, "many keys"));
    EXPECT_TRUE(comesToFront(fast));
    EXPECT_FALSE(log.hasLineWith("not delivered"));
}

// A program looks a key up once more after the input method has answered, however late that is.
TEST_F(X11BypassedTyping, LeavesRemappedKeysWhereAProgramMayStillLookThemUp) {
    const X11Target target(X11Target::Kind::gtk3Entry, mainQueue);
    ASSERT_TRUE(comesToFront(target));
    const AnnouncedMethod method;
    const int spare = user->keysWithoutSymbol();
    type("żж", target.process());
    EXPECT_TRUE(becomes(target, "żж"));
    // Without an input method the keys are restored after 700 ms.
    mainQueue.runFor(std::chrono::milliseconds(1500));
    EXPECT_LT(user->keysWithoutSymbol(), spare);
    input.reset();
    EXPECT_EQ(user->keysWithoutSymbol(), spare);
}

}  // namespace

}  // namespace tarvik::tests
