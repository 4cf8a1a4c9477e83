// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/linux/settings/SettingsFileTest.h"

namespace tarvik::tests {

namespace {

TEST_F(SettingsFileTest, AFileThatIsNoTextIsSetAsideWithOneLine) {
    const std::string garbage = std::string("[General]\na=1\n\0\xff\xfe", 17);
    putFile(path, garbage);
    open();
    EXPECT_EQ(defaults->stringForKey("a"), std::nullopt);
    EXPECT_EQ(log.linesWith("set aside as " + path + ".corrupt").size(), 1U);
    defaults->setString("new", "deepgramApiKey");
    close();
    EXPECT_EQ(contentOf(path), "[General]\ndeepgramApiKey=new\n");
    EXPECT_EQ(contentOf(path + ".corrupt"), garbage);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(SettingsFileTest, AFileWithALineThatIsNoEntryIsSetAside) {
    for (const char* line : {"this makes no sense", "=value", "[General", "]", "deepgramApi"}) {
        const std::string content =
            "; comment\n[General]\ndeepgramApiKey=old\n" + std::string(line) + "\nb=1\n";
        putFile(path, content);
        open();
        EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), std::nullopt) << line;
        EXPECT_EQ(defaults->integerForKey("b"), 0) << line;
        close();
        EXPECT_EQ(log.linesWith("line 4 makes no sense").size(), 1U) << line;
        EXPECT_EQ(log.lines().size(), 1U) << line;
        EXPECT_EQ(contentOf(path + ".corrupt"), content) << line;
        EXPECT_FALSE(std::filesystem::exists(path)) << line;
        std::filesystem::remove(path + ".corrupt");
        log.clear();
    }
}

TEST_F(SettingsFileTest, WhatIsKnownSurvivesAFileThatBecomesCorrupt) {
    putFile(path, "[General]\ndeepgramApiKey=old\n");
    open();
    putFile(path, "half a li");
    defaults->setBool(true, "loginItemAutoConfigured");
    close();
    EXPECT_EQ(contentOf(path), "[General]\ndeepgramApiKey=old\nloginItemAutoConfigured=true\n");
    EXPECT_EQ(contentOf(path + ".corrupt"), "half a li");
}

TEST_F(SettingsFileTest, ASecondCorruptFileDoesNotReplaceTheFirst) {
    putFile(path + ".corrupt", "first");
    putFile(path, "\xff second");
    open();
    EXPECT_EQ(contentOf(path + ".corrupt"), "first");
    EXPECT_EQ(contentOf(path + ".corrupt-2"), "\xff second");
}

TEST_F(SettingsFileTest, WhatCannotBeSavedIsReportedOnceAndTriedAgain) {
    std::filesystem::create_directories(path);
    open();
    defaults->setString("one", "deepgramApiKey");
    EXPECT_TRUE(eventually([&] { return log.linesWith("settings cannot be saved").size() == 1; }));
    defaults->setString("two", "deepgramApiKey");
    defaults->setInteger(7, "totalDictationSeconds");
    EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), "two");
    std::filesystem::remove(path);
    defaults->setBool(true, "loginItemAutoConfigured");
    close();
    EXPECT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(contentOf(path),
              "[General]\ndeepgramApiKey=two\ntotalDictationSeconds=7\n"
              "loginItemAutoConfigured=true\n");
}

/// Limits the size of files of this process, so that a write fails half-way as on a full disk.
class SizeLimit {
  public:
    explicit SizeLimit(rlim_t bytes) : signalBefore_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~SizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signalBefore_);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

  private:
    void (*signalBefore_)(int);
    rlimit before_{};
};

TEST_F(SettingsFileTest, AWriteThatFailsHalfWayLeavesTheOldFileWhole) {
    const std::string old = "[General]\ndeepgramApiKey=old\n";
    putFile(path, old);
    open();
    {
        const SizeLimit limit(rlim_t{16} << 10);
        defaults->setString(std::string(64 << 10, 'x'), "deepgramApiKey");
        EXPECT_TRUE(eventually([&] { return log.linesWith("File too large").size() == 1; }));
    }
    EXPECT_EQ(contentOf(path), old);
    defaults->setString("new", "deepgramApiKey");
    close();
    EXPECT_EQ(contentOf(path), "[General]\ndeepgramApiKey=new\n");
    // No half-written file is left.
    const auto folderOfFile = std::filesystem::path(path).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folderOfFile), {}), 1);
    EXPECT_EQ(log.linesWith("settings cannot be saved").size(), 1U);
}

TEST_F(SettingsFileTest, ALinkedFileStaysALink) {
    const std::string real = folder / "dotfiles/dictate.conf";
    putFile(real, "[General]\na=1\n");
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::create_symlink(real, path);
    open();
    defaults->setInteger(2, "a");
    close();
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_EQ(contentOf(real), "[General]\na=2\n");
}

TEST_F(SettingsFileTest, APipeInThePlaceOfTheFileDoesNotStopTheProgram) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    open();
    EXPECT_EQ(log.linesWith("settings cannot be saved").size(), 1U);
    EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), std::nullopt);
}

}  // namespace

}  // namespace tarvik::tests
