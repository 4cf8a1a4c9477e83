// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "platform/linux/settings/TemporaryDesktopFile.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::TemporaryDesktopFile;

class TemporaryDesktopFileTest : public testing::Test {
  protected:
    TemporaryDesktopFileTest() {
        setenv("XDG_DATA_HOME", (folder / "user").c_str(), 1);
        setenv("XDG_DATA_DIRS",
               ((folder / "first").string() + ":" + (folder / "second").string()).c_str(), 1);
        open();
    }
    ~TemporaryDesktopFileTest() override {
        unsetenv("XDG_DATA_HOME");
        unsetenv("XDG_DATA_DIRS");
    }

    void open() {
        file.emplace(log, TemporaryDesktopFile::Description{"an.application", "X-Own=1\n", "it",
                                                            "nothing tells it of"});
    }

    const TemporaryFolder folder;
    const std::filesystem::path path = folder / "user/applications/an.application.desktop";
    const std::string installed = "[Desktop Entry]\nName=Installed\n";
    RecordingLog log;
    std::optional<TemporaryDesktopFile> file;
};

TEST_F(TemporaryDesktopFileTest, IsThereFromTheRequestToTheEnd) {
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(file->make());
    EXPECT_FALSE(file->make());
    const std::string content = contentOf(path);
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_NE(content.find("Exec=" + program + "\n"), std::string::npos) << content;
    EXPECT_NE(content.find("X-Own=1\n"), std::string::npos);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"TarvikDictate: nothing tells it of " + program +
                                        "; until the end of this run there is " + path.string()}));
    file.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryDesktopFileTest, OfAKilledRunIsRemovedByTheNextOne) {
    ASSERT_TRUE(file->make());
    const std::string content = contentOf(path);
    file.reset();
    putFile(path, content);
    open();
    EXPECT_FALSE(file->makeUnlessInstalled());
    EXPECT_TRUE(std::filesystem::exists(path));
    file.reset();
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryDesktopFileTest, IsNotNeededBesideAnInstalledOne) {
    ASSERT_TRUE(file->make());
    putFile(folder / "second/applications/an.application.desktop", installed);
    EXPECT_FALSE(file->makeUnlessInstalled());
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryDesktopFileTest, OfTheUserStays) {
    putFile(path, installed);
    EXPECT_FALSE(file->makeUnlessInstalled());
    file.reset();
    EXPECT_EQ(contentOf(path), installed);
}

TEST_F(TemporaryDesktopFileTest, ThatCannotBeMadeIsOneLine) {
    putFile(folder / "user", "a file in the place of the folder");
    EXPECT_FALSE(file->make());
    EXPECT_EQ(log.linesWith("no desktop file for it: ").size(), 1U);
}

}  // namespace

}  // namespace tarvik::tests
