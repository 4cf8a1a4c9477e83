#include <cstdlib>
#include <filesystem>
#include <optional>

#include "platform/linux/system/XdgLoginItem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

/// The autostart entry as the desktop and the user find it.
class AutostartTest : public testing::Test {
  protected:
    AutostartTest() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        useProgram("tarvik-dictate");
    }

    void useProgram(const std::string& name) {
        const std::filesystem::path program = folder / name;
        putProgram(program, "");
        item.emplace(program);
    }

    /// What the desktop's own check says about the entry; empty when it has nothing to say.
    std::string complaints() { return TestProcess::run({"desktop-file-validate", entry}).output; }

    TemporaryFolder folder;
    const std::filesystem::path entry = folder / "config/autostart/com.tarvik.dictate.desktop";
    std::optional<linuxdesktop::XdgLoginItem> item;
};

TEST_F(AutostartTest, TheEntryIsValidWhateverTheProgramIsCalled) {
    for (const char* name : {"tarvik-dictate", "two words", "100% $HOME `x` \"y\" \\ z", "日本"}) {
        useProgram(name);
        ASSERT_FALSE(item->registerItem());
        EXPECT_EQ(complaints(), "") << contentOf(entry);
        EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
    }
    putFile(entry, "[Desktop Entry]\nType=Application\n");
    EXPECT_NE(complaints(), "");
}

TEST_F(AutostartTest, AnEntryThatTheUserHasDeletedIsOff) {
    ASSERT_FALSE(item->registerItem());
    std::filesystem::remove(entry);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
    EXPECT_FALSE(item->unregisterItem());
}

TEST_F(AutostartTest, RegisteringEndsWhatHidesIt) {
    putFile(entry, "[Desktop Entry]\nType=Application\nName=x\nExec=x\nHidden=true\n");
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
    EXPECT_FALSE(item->registerItem());
    EXPECT_EQ(item->status(), platform::LoginItemStatus::enabled);
}

TEST_F(AutostartTest, AFolderThatCannotBeWrittenToGivesAReason) {
    // Also root cannot make a file below a file.
    putFile(entry.parent_path(), "in the way");
    const std::optional<Error> failure = item->registerItem();
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->localizedDescription.find("autostart"), std::string::npos);
    EXPECT_EQ(item->status(), platform::LoginItemStatus::notRegistered);
}

}  // namespace

}  // namespace tarvik::tests
