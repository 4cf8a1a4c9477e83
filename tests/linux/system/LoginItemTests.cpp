// SPDX-License-Identifier: MIT

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "platform/linux/system/XdgLoginItem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

/// The autostart entry as the desktop and the user find it.
class LoginItemTest : public testing::Test {
  protected:
    LoginItemTest() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        useProgram("tarvik-dictate");
    }

    void useProgram(const std::string& name) {
        program = folder / name;
        putProgram(program, "");
        item.emplace(program);
    }

    /// The complaints of the desktop's own check about the entry; empty for a valid entry.
    std::string complaints() { return TestProcess::run({"desktop-file-validate", entry}).output; }

    TemporaryFolder folder;
    std::filesystem::path program;
    const std::filesystem::path entry = folder / "config/autostart/com.tarvik.dictate.desktop";
    std::optional<linuxdesktop::XdgLoginItem> item;
};

TEST_F(LoginItemTest, TheEntryQuotesAnAwkwardPathTwice) {
    useProgram("my \"100%\" $program`\\");
    EXPECT_FALSE(item->registerItem());
    const std::string start = folder.path();
    EXPECT_NE(contentOf(entry).find("\nExec=\"" + start +
                                    "/my \\\\\"100%%\\\\\" \\\\$program\\\\`\\\\\\\\\"\n"),
              std::string::npos)
        << contentOf(entry);
    EXPECT_NE(contentOf(entry).find("\nTryExec=" + start + "/my \"100%\" $program`\\\\\n"),
              std::string::npos);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
}

TEST_F(LoginItemTest, TheEntryIsValidWhateverTheProgramIsCalled) {
    for (const char* name : {"tarvik-dictate", "two words", "100% $HOME `x` \"y\" \\ z", "日本"}) {
        useProgram(name);
        ASSERT_FALSE(item->registerItem());
        EXPECT_EQ(complaints(), "") << contentOf(entry);
        EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
    }
    putFile(entry, "[Desktop Entry]\nType=Application\n");
    EXPECT_NE(complaints(), "");
}

TEST_F(LoginItemTest, AnEntryThatTheUserHasSwitchedOffIsNotRegistered) {
    EXPECT_FALSE(item->registerItem());
    const std::string registered = contentOf(entry);
    for (const char* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        putFile(entry, registered + off);
        EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
    }
    putFile(entry, registered + "[Desktop Action Other]\nHidden=true\n");
    EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
    std::filesystem::remove(program);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
}

TEST_F(LoginItemTest, AnEntryThatTheUserHasDeletedIsOff) {
    ASSERT_FALSE(item->registerItem());
    std::filesystem::remove(entry);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
    EXPECT_FALSE(item->unregisterItem());
}

TEST_F(LoginItemTest, AProgramWithoutAPathIsLookedForWhereProgramsAre) {
    const auto statusWith = [&](const char* name) {
        putFile(entry, std::string("[Desktop Entry]\nExec=x\nTryExec=") + name + "\n");
        return item->status();
    };
    EXPECT_EQ(statusWith("sh"), platform::LoginItemStatus::enabled);
    EXPECT_EQ(statusWith("no-such-program"), platform::LoginItemStatus::notRegistered);
}

TEST_F(LoginItemTest, RegisteringEndsWhatHidesIt) {
    putFile(entry, "[Desktop Entry]\nType=Application\nName=x\nExec=x\nHidden=true\n");
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
    EXPECT_FALSE(item->registerItem());
    EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
}

TEST_F(LoginItemTest, AFolderThatCannotBeWrittenToGivesAReason) {
    // Also root cannot make a file below a file.
    putFile(entry.parent_path(), "in the way");
    const std::optional<Error> failure = item->registerItem();
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->localizedDescription.find("autostart"), std::string::npos);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
}

}  // namespace

}  // namespace tarvik::tests
