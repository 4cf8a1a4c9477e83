// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "platform/EventManager.h"
#include "platform/linux/gnome/GnomeShortcuts.h"
#include "tests/linux/gnome/GnomeUser.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::GnomeShortcuts;
using linuxdesktop::isSpaceWith;

constexpr auto alt = platform::optionKeyMask;
constexpr auto altShift = platform::optionKeyMask | platform::shiftKeyMask;
constexpr const char* windowSchema = "org.gnome.desktop.wm.keybindings";
constexpr const char* windowMenu = "activate-window-menu";
constexpr const char* mediaSchema = "org.gnome.settings-daemon.plugins.media-keys";
constexpr const char* customKey = "custom-keybindings";

TEST(GnomeAccelerator, IsTheSpaceBarWithItsModifiersInAnyOrderAndCase) {
    EXPECT_TRUE(isSpaceWith(alt, "<Alt>space"));
    EXPECT_TRUE(isSpaceWith(alt, "<alt>Space"));
    EXPECT_TRUE(isSpaceWith(alt, "<Mod1>space"));
    EXPECT_TRUE(isSpaceWith(altShift, "<Shift><Alt>space"));
    EXPECT_FALSE(isSpaceWith(alt, "<Shift><Alt>space"));
    EXPECT_FALSE(isSpaceWith(alt, "<Super>space"));
    EXPECT_FALSE(isSpaceWith(alt, "<Alt>F4"));
    EXPECT_FALSE(isSpaceWith(alt, ""));
    EXPECT_FALSE(isSpaceWith(alt, "<Alt"));
}

class GnomeShortcutTest : public testing::Test {
  protected:
    ~GnomeShortcutTest() override {
        GnomeUser::set(windowSchema, windowMenu, "[]");
        GnomeUser::set(mediaSchema, customKey, "[]");
    }

    GnomeShortcuts shortcuts;
};

TEST_F(GnomeShortcutTest, NamesTheOwnerOfACombination) {
    EXPECT_EQ(shortcuts.ownerOf(alt), std::nullopt);
    GnomeUser::set(windowSchema, windowMenu, "['<Alt>space']");
    EXPECT_EQ(shortcuts.ownerOf(alt), "the menu of windows (activate-window-menu)");
    EXPECT_EQ(shortcuts.ownerOf(altShift), std::nullopt);
    GnomeUser::set(windowSchema, windowMenu, "[]");
    GnomeUser::set(windowSchema, "minimize", "['<Super>h', '<Alt><Shift>space']");
    EXPECT_EQ(shortcuts.ownerOf(altShift), "minimize");
    GnomeUser::set(windowSchema, "minimize", "['<Super>h']");
}

TEST_F(GnomeShortcutTest, NamesACustomShortcutOfTheUsersOwn) {
    const std::string path =
        "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0/";
    const std::string schema = std::string(mediaSchema) + ".custom-keybinding:" + path;
    GnomeUser::set(schema, "name", "Launcher");
    GnomeUser::set(schema, "binding", "<Alt>space");
    GnomeUser::set(mediaSchema, customKey, "['" + path + "']");
    EXPECT_EQ(shortcuts.ownerOf(alt), "the custom shortcut “Launcher”");
}

TEST_F(GnomeShortcutTest, OwnShortcutsComeAndGoBesideTheUsersOwn) {
    GnomeUser::set(mediaSchema, customKey, "['/a/']");
    EXPECT_TRUE(shortcuts.bind(alt, "true"));
    EXPECT_TRUE(shortcuts.bind(altShift, "true"));
    EXPECT_TRUE(shortcuts.bind(alt, "false"));
    EXPECT_EQ(shortcuts.ownerOf(alt), std::nullopt);
    const std::string folder =
        "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/tarvik-dictate-";
    EXPECT_EQ(GnomeUser::setting(mediaSchema, customKey),
              "['/a/', '" + folder + "hold/', '" + folder + "toggle/']");
    shortcuts.unbind(alt);
    shortcuts.unbind(altShift);
    EXPECT_EQ(GnomeUser::setting(mediaSchema, customKey), "['/a/']");
}

}  // namespace

}  // namespace tarvik::tests
