// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/linux/gnome/WindowMenuShortcut.h"
#include "tests/linux/gnome/FakeShell.h"
#include "tests/linux/gnome/GnomeEnvironment.h"
#include "tests/support/PrivateBus.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::GnomeSettings;
using linuxdesktop::WindowMenuShortcut;
using Texts = GnomeSettings::Texts;

constexpr const char* key = "activate-window-menu";

/// By GNOME's own value, the menu has Alt+Space.
class WindowMenuShortcutTest : protected GnomeEnvironment, public testing::Test {
  protected:
    // Settings of this process alone.
    WindowMenuShortcutTest() : GnomeEnvironment("memory") { settings.reset(key); }
    ~WindowMenuShortcutTest() override { settings.reset(key); }

    Texts menu() const { return settings.texts(key).value_or(Texts{}); }
    bool hasNote() const { return std::filesystem::exists(note()); }
    std::filesystem::path note() const { return folder / "Tarvik/gnome-window-menu"; }

    GnomeSettings settings{"org.gnome.desktop.wm.keybindings"};
    WindowMenuShortcut shortcut;
};

TEST_F(WindowMenuShortcutTest, NothingIsTakenUnasked) {
    shortcut.takeAgain();
    EXPECT_TRUE(shortcut.isInMenu());
    shortcut.giveBack();
    EXPECT_FALSE(settings.isSet(key));
    EXPECT_FALSE(hasNote());
}

TEST_F(WindowMenuShortcutTest, GoesBackToASettingOfTheUsersOwn) {
    const Texts had{"<Super>m", "<Alt>space", "<Super>w"};
    settings.set(key, had);
    EXPECT_TRUE(shortcut.take());
    EXPECT_EQ(menu(), (Texts{"<Super>m", "<Super>w"}));
    EXPECT_FALSE(shortcut.isInMenu());
    shortcut.giveBack();
    EXPECT_EQ(menu(), had);
}

TEST_F(WindowMenuShortcutTest, ASettingThatTheUserNeverTouchedIsUntouchedAfterwards) {
    EXPECT_TRUE(shortcut.take());
    EXPECT_EQ(menu(), Texts{});
    shortcut.giveBack();
    EXPECT_EQ(menu(), Texts{"<Alt>space"});
    EXPECT_FALSE(settings.isSet(key));
}

TEST_F(WindowMenuShortcutTest, IsTakenAgainAtEveryStartAfterTheUserHasAgreedOnce) {
    EXPECT_TRUE(shortcut.take());
    for (int start = 0; start < 2; ++start) {
        shortcut.giveBack();
        EXPECT_TRUE(shortcut.isInMenu());
        shortcut.takeAgain();
        EXPECT_FALSE(shortcut.isInMenu());
    }
}

TEST_F(WindowMenuShortcutTest, AMenuThatHasItAgainKeepsItAndTheAgreementEnds) {
    EXPECT_TRUE(shortcut.take());
    settings.set(key, Texts{"<Alt>space", "<Super>m"});
    shortcut.giveBack();
    EXPECT_EQ(menu(), (Texts{"<Alt>space", "<Super>m"}));
    shortcut.takeAgain();
    EXPECT_TRUE(shortcut.isInMenu());
    EXPECT_FALSE(hasNote());
}

TEST_F(WindowMenuShortcutTest, WhatTheUserHasChangedMeanwhileStays) {
    EXPECT_TRUE(shortcut.take());
    settings.set(key, Texts{"<Super>m"});
    shortcut.giveBack();
    EXPECT_EQ(menu(), (Texts{"<Super>m", "<Alt>space"}));
}

// The user has agreed, and nothing is taken at present.
TEST_F(WindowMenuShortcutTest, WhatTheUserHasChangedBetweenTwoRunsStays) {
    EXPECT_TRUE(shortcut.take());
    shortcut.giveBack();
    settings.set(key, Texts{});
    shortcut.takeAgain();
    shortcut.giveBack();
    EXPECT_EQ(menu(), Texts{});
}

TEST_F(WindowMenuShortcutTest, NothingIsTakenWhereNoNoteCanBeWritten) {
    std::ofstream(folder / "Tarvik") << "a file in the place of the folder";
    EXPECT_FALSE(shortcut.take());
    EXPECT_TRUE(shortcut.isInMenu());
}

TEST_F(WindowMenuShortcutTest, ANoteThatNobodyUnderstandsTakesNothingAndGivesNothing) {
    std::filesystem::create_directory(folder / "Tarvik");
    for (const std::string text :
         {"", "taken\n", "taken\n<Super>m\n", "<Alt>space\n", "agreed\nx\n"}) {
        std::ofstream(note()) << text;
        shortcut.takeAgain();
        EXPECT_TRUE(shortcut.isInMenu()) << text;
        settings.set(key, Texts{});
        shortcut.giveBack();
        EXPECT_EQ(menu(), Texts{}) << text;
        settings.reset(key);
    }
}

/// Runs of processes that share the user's settings, as files.
class GnomeConsent : protected GnomeEnvironment, public testing::Test {
  protected:
    GnomeConsent() : GnomeEnvironment("keyfile") {}

    void SetUp() override { files = {folder / "glib-2.0", folder / "Tarvik"}; }
    void forget() {
        for (const auto& path : files) {
            std::filesystem::remove_all(path);
        }
    }
    void setMenu(const std::string& value) {
        std::filesystem::create_directories(folder / "glib-2.0/settings");
        std::ofstream(folder / "glib-2.0/settings/keyfile")
            << "[org/gnome/desktop/wm/keybindings]\nactivate-window-menu=" << value << "\n";
    }
    static std::string userSettings() {
        return TestProcess::run({TARVIK_GNOME_CONSENT, "settings"}).output;
    }
    // The bus needs to know that the last process is gone.
    int run(const std::string& consent, int step) {
        while (shell.isApplicationThere()) {
        }
        return TestProcess::run({TARVIK_GNOME_CONSENT, consent, std::to_string(step)}).status;
    }
    /// Kills a run before each of its steps, and has the next one begin and end.
    template <typename Prepare>
    void killEverywhere(const std::string& consent, Prepare prepare) {
        int step = 0;
        int status = -1;
        while (status != 0) {
            forget();
            prepare();
            const std::string before = userSettings();
            status = run(consent, ++step);
            ASSERT_LE(status, 0);
            EXPECT_EQ(run("do-not-ask", 0), 0);
            ASSERT_EQ(userSettings(), before) << "after a kill before step " << step;
        }
        // The run writes its shortcuts and removes them, the menu's and the note.
        EXPECT_GT(step, 10);
    }

    PrivateBus bus;
    FakeShell shell;
    std::vector<std::filesystem::path> files;
};

TEST_F(GnomeConsent, OfAKilledRunTheUsersOwnSettingIsAsBeforeAfterTheNextOne) {
    killEverywhere("ask", [this] { setMenu("['<Super>m', '<Alt>space']"); });
}

TEST_F(GnomeConsent, OfAKilledRunAnUntouchedSettingIsUntouchedAfterTheNextOne) {
    killEverywhere("ask", [] {});
}

TEST_F(GnomeConsent, OfAKilledRunWithAnEarlierAgreementEverythingIsAsBeforeAfterTheNextOne) {
    killEverywhere("do-not-ask", [this] {
        setMenu("['<Alt>space', '<Super>m']");
        EXPECT_EQ(run("ask", 0), 0);
    });
}

}  // namespace

}  // namespace tarvik::tests
