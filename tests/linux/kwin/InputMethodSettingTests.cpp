// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "platform/linux/kwin/InputMethodSetting.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::InputMethodSetting;

constexpr const char* ours = "/run/user/1/ours.desktop";

class InputMethodSettingTest : public testing::Test {
  protected:
    InputMethodSettingTest() {
        std::filesystem::create_directory(folder.path() / "system");
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        setenv("XDG_CONFIG_DIRS", (folder.path() / "system").c_str(), 1);
        setting.emplace(ours);
    }
    ~InputMethodSettingTest() override {
        unsetenv("XDG_CONFIG_HOME");
        unsetenv("XDG_CONFIG_DIRS");
    }

    void write(const std::string& content) {
        std::ofstream(folder.path() / "kwinrc", std::ios::binary) << content;
    }
    std::string content() const {
        std::ifstream file(folder.path() / "kwinrc", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const TemporaryFolder folder;
    // Made when the folders are the test's own.
    std::optional<InputMethodSetting> setting;
};

TEST_F(InputMethodSettingTest, TakesAFreePlaceAndPutsTheSettingsBackAsTheyWere) {
    for (const std::string before :
         {"", "[Compositing]\nBackend=x\n", "[Wayland]\nVirtualKeyboardEnabled=true\n",
          "[Wayland]\nInputMethod=\nA=b\n\n[Xwayland]\nScale=1\n", "[Wayland]\nInputMethod[$e]=\n",
          "[Other]\nInputMethod=/not/of/this/group\n"}) {
        write(before);
        EXPECT_EQ(setting->other(), "") << before;
        EXPECT_FALSE(setting->take());
        EXPECT_FALSE(setting->take());
        EXPECT_NE(content().find(std::string("InputMethod=") + ours + "\n"), std::string::npos);
        EXPECT_EQ(setting->other(), "");
        // As the next process finds them after a kill.
        InputMethodSetting next{ours};
        EXPECT_TRUE(next.giveBack());
        EXPECT_EQ(content(), before);
        EXPECT_FALSE(next.giveBack());
    }
}

TEST_F(InputMethodSettingTest, WritesItsEntryIntoTheGroup) {
    write("[A]\nb=c\n\n[Wayland]\nd=e\n\n[F]\ng=h\n");
    EXPECT_FALSE(setting->take());
    EXPECT_EQ(content(),
              std::string("[A]\nb=c\n\n[Wayland]\nd=e\nInputMethod=") + ours + "\n\n[F]\ng=h\n");
}

TEST_F(InputMethodSettingTest, KnowsTheInputMethodOfTheUserAndOfTheSystem) {
    write("[Wayland]\nInputMethod=/usr/share/applications/maliit.desktop\n");
    EXPECT_EQ(setting->other(), "/usr/share/applications/maliit.desktop");
    write("[Wayland]\nInputMethod[$e]=$HOME/own.desktop\n");
    EXPECT_EQ(setting->other(), "$HOME/own.desktop");
    write("");
    std::ofstream(folder.path() / "system" / "kwinrc")
        << "[Wayland]\nInputMethod=/system.desktop\n";
    EXPECT_EQ(setting->other(), "/system.desktop");
}

TEST_F(InputMethodSettingTest, LeavesAnotherEntryAloneThatCameMeanwhile) {
    write("[Wayland]\n");
    EXPECT_FALSE(setting->take());
    write("[Wayland]\nInputMethod=/usr/share/applications/maliit.desktop\n");
    EXPECT_FALSE(setting->giveBack());
    EXPECT_EQ(content(), "[Wayland]\nInputMethod=/usr/share/applications/maliit.desktop\n");
}

TEST_F(InputMethodSettingTest, TellsOfSettingsThatCannotBeWritten) {
    std::filesystem::create_directory(folder.path() / "kwinrc");
    EXPECT_TRUE(setting->take());
    EXPECT_FALSE(setting->giveBack());
}

}  // namespace

}  // namespace tarvik::tests
