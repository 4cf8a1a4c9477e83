// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QSettings>
#include <QSize>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/linux/settings/FileUserDefaults.h"
#include "tests/linux/loop/ThreadShortage.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

class SettingsFileTest : public testing::Test {
  protected:
    void open() { defaults.emplace(path, log); }
    /// Waits until everything is saved.
    void close() { defaults.reset(); }

    template <typename Condition>
    bool eventually(Condition condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::yield();
        }
        return true;
    }

    TemporaryFolder folder;
    const std::string path = folder / "config/Tarvik/Tarvik Dictate.conf";
    RecordingLog log;
    std::optional<linuxdesktop::FileUserDefaults> defaults;
};

mode_t modeOf(const std::filesystem::path& path) {
    struct stat facts {};
    stat(path.c_str(), &facts);
    return facts.st_mode & 07777;
}

TEST_F(SettingsFileTest, OnlyTheUserCanReadTheFileAndItsFolder) {
    umask(0);
    open();
    defaults->setString("secret", "deepgramApiKey");
    close();
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(std::filesystem::path(path).parent_path()), 0700U);
}

TEST_F(SettingsFileTest, AFileAndAFolderThatOthersCouldReadAreClosedToThemAtTheStart) {
    const auto parent = std::filesystem::path(path).parent_path();
    putFile(path, "[General]\ndeepgramApiKey=secret\n");
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    std::filesystem::permissions(parent, std::filesystem::perms(0755));
    const mode_t modeAbove = modeOf(parent.parent_path());
    open();
    EXPECT_EQ(modeOf(path), 0600U);
    EXPECT_EQ(modeOf(parent), 0700U);
    EXPECT_EQ(modeOf(parent.parent_path()), modeAbove);
    EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), "secret");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SettingsFileTest, ACorruptFileThatOthersCouldReadIsClosedToThemToo) {
    putFile(path, "deepgramApiKey=secret\nhalf a li");
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    open();
    EXPECT_EQ(modeOf(path + ".corrupt"), 0600U);
}

TEST_F(SettingsFileTest, AFileThatOthersCouldReadIsClosedToThemByTheNextWrite) {
    putFile(path, "[General]\ndeepgramApiKey=secret\n");
    open();
    std::filesystem::permissions(path, std::filesystem::perms(0644));
    defaults->setInteger(1, "totalDictationSeconds");
    close();
    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(SettingsFileTest, SpacesOfEveryKindAtTheEndsOfATextAreKept) {
    const std::string texts[] = {"\u00A0key\u00A0", "\u200Bkey\u200B", "key\uFEFF\u2003", "\u3000",
                                 "\u200B"};
    for (const std::string& text : texts) {
        open();
        defaults->setString(text, "deepgramApiKey");
        close();
        open();
        EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), text);
    }
}

TEST_F(SettingsFileTest, ASettingReachesTheDiskWithoutWaitingForTheEnd) {
    open();
    defaults->setString("secret", "deepgramApiKey");
    EXPECT_TRUE(
        eventually([&] { return contentOf(path) == "[General]\ndeepgramApiKey=secret\n"; }));
    defaults->removeObjectForKey("deepgramApiKey");
    EXPECT_TRUE(eventually([&] { return contentOf(path) == "[General]\n"; }));
}

TEST_F(SettingsFileTest, WithoutAThreadASettingIsSavedAtOnceAndOneLineSaysWhy) {
    {
        const ThreadShortage shortage;
        open();
    }
    defaults->setString("secret", "deepgramApiKey");
    EXPECT_EQ(contentOf(path), "[General]\ndeepgramApiKey=secret\n");
    EXPECT_EQ(log.linesWith("no thread for the settings").size(), 1U);
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(SettingsFileTest, AFileWrittenByHandIsRead) {
    putFile(path,
            "; my settings\n"
            "\n"
            "[General]\n"
            "  deepgramHost = localhost:8443  \n"
            "deepgramApiKey=\"with; a = sign\" ; the comment\r\n"
            "totalDictationSeconds=600\n"
            "ctaTenMinuteShown=true\n"
            "quoted=\"unfinished\n"
            "list=a, b\n"
            "variant=@Variant(\\0\\0)\n"
            "[Other]\n"
            "deepgramHost=wrong\n");
    open();
    EXPECT_EQ(defaults->stringForKey("deepgramHost"), "localhost:8443");
    EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), "with; a = sign");
    EXPECT_EQ(defaults->integerForKey("totalDictationSeconds"), 600);
    EXPECT_TRUE(defaults->boolForKey("ctaTenMinuteShown"));
    EXPECT_EQ(defaults->stringForKey("quoted"), "unfinished");
    EXPECT_EQ(defaults->stringForKey("list"), std::nullopt);
    EXPECT_TRUE(defaults->hasObjectForKey("list"));
    EXPECT_EQ(defaults->stringForKey("variant"), std::nullopt);
    EXPECT_TRUE(defaults->hasObjectForKey("variant"));
    EXPECT_FALSE(defaults->hasObjectForKey("absent"));
    EXPECT_EQ(defaults->stringForKey("[Other]"), std::nullopt);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(SettingsFileTest, EntriesWithoutAGroupCountToo) {
    putFile(path, "deepgramHost=localhost:8443");
    open();
    EXPECT_EQ(defaults->stringForKey("deepgramHost"), "localhost:8443");
    defaults->setBool(true, "loginItemAutoConfigured");
    close();
    EXPECT_EQ(contentOf(path), "deepgramHost=localhost:8443\nloginItemAutoConfigured=true\n");
}

TEST_F(SettingsFileTest, ANewEntryIsNoPartOfALastLineThatGoesOn) {
    for (const std::string last : {"a=1\\\n", "a=1\\", "a=\"1\\", "a=1\\\n b\\\n"}) {
        putFile(path, "[General]\n" + last);
        open();
        const auto before = defaults->stringForKey("a");
        defaults->setString("secret", "deepgramApiKey");
        close();
        open();
        EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), "secret") << contentOf(path);
        EXPECT_EQ(defaults->stringForKey("a"), before) << contentOf(path);
        close();
    }
}

TEST_F(SettingsFileTest, ATextWithAZeroCharacterReadsAsAbsent) {
    putFile(path, "[General]\ndeepgramApiKey=a\\x0\ndeepgramHost=\\0.example\n");
    open();
    EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), std::nullopt);
    EXPECT_EQ(defaults->stringForKey("deepgramHost"), std::nullopt);
}

TEST_F(SettingsFileTest, NumbersThatDoNotFitReadAsAbsent) {
    putFile(
        path,
        "[General]\ntoo large=99999999999999999999\nfraction=1.5\nhalf=12x\nyes=TRUE\nempty=\n");
    open();
    for (const char* key : {"too large", "fraction", "half", "yes", "empty"}) {
        EXPECT_EQ(defaults->integerForKey(key), 0);
        EXPECT_FALSE(defaults->boolForKey(key));
    }
}

TEST_F(SettingsFileTest, EverythingElseInTheFileIsKept) {
    putFile(path, "# comment\n[General]\na=1\nlist=x, y ; why\n\n[Window]\nsize=@Size(1 2)\n");
    open();
    defaults->setInteger(2, "a");
    defaults->setString("new", "b");
    close();
    EXPECT_EQ(contentOf(path),
              "# comment\n[General]\na=2\nlist=x, y ; why\nb=new\n\n[Window]\nsize=@Size(1 2)\n");
}

TEST_F(SettingsFileTest, WhatSomebodyElseChangesMeanwhileIsKeptAndTakenOver) {
    putFile(path, "[General]\nmine=1\ntheirs=old\n");
    open();
    putFile(path, "[General]\nmine=1\ntheirs=new\n");
    defaults->setInteger(2, "mine");
    EXPECT_TRUE(eventually([&] { return defaults->stringForKey("theirs") == "new"; }));
    close();
    EXPECT_EQ(contentOf(path), "[General]\nmine=2\ntheirs=new\n");
}

TEST_F(SettingsFileTest, ADeletedFileIsWrittenAnewAsAWhole) {
    putFile(path, "[General]\nkept=1\n");
    open();
    std::filesystem::remove(path);
    defaults->setInteger(2, "new");
    close();
    EXPECT_EQ(contentOf(path), "[General]\nkept=1\nnew=2\n");
}

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

TEST_F(SettingsFileTest, BytesThatAreNoTextDoNotMakeTheFileUnreadable) {
    open();
    defaults->setString(
        "a\xff"
        "b",
        "text");
    close();
    open();
    EXPECT_EQ(defaults->stringForKey("text"),
              "a\xef\xbf\xbd"
              "b");
}

const char* const awkwardTexts[] = {"plain",
                                    "",
                                    "  blanks ",
                                    "a \"quoted\" word",
                                    "back\\slash",
                                    "a,b;c=d",
                                    "100 % %41",
                                    "Zażółć 日本 😀",
                                    "line\nbreak\ttab",
                                    "\x05"
                                    "abc",
                                    "@at",
                                    "@Variant(x)",
                                    "true",
                                    "42"};

TEST_F(SettingsFileTest, QSettingsReadsWhatIsWritten) {
    open();
    for (const char* text : awkwardTexts) {
        defaults->setString(text, text[0] == '\0' ? "empty" : text);
    }
    defaults->setInteger(-5, "number");
    defaults->setBool(true, "yes");
    close();
    QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
    for (const char* text : awkwardTexts) {
        const QString key = text[0] == '\0' ? QStringLiteral("empty") : QString::fromUtf8(text);
        EXPECT_EQ(settings.value(key).toString().toStdString(), text);
    }
    EXPECT_EQ(settings.value("number").toInt(), -5);
    EXPECT_TRUE(settings.value("yes").toBool());
    EXPECT_EQ(settings.status(), QSettings::NoError);
}

TEST_F(SettingsFileTest, WhatQSettingsWritesIsRead) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    {
        QSettings settings(QString::fromStdString(path), QSettings::IniFormat);
        for (const char* text : awkwardTexts) {
            const QString key = text[0] == '\0' ? QStringLiteral("empty") : QString::fromUtf8(text);
            settings.setValue(key, QString::fromUtf8(text));
        }
        settings.setValue("number", -5);
        settings.setValue("yes", true);
        settings.setValue("list", QStringList{"a", "b"});
        settings.setValue("size", QSize(1, 2));
    }
    open();
    for (const char* text : awkwardTexts) {
        EXPECT_EQ(defaults->stringForKey(text[0] == '\0' ? "empty" : text), text);
    }
    EXPECT_EQ(defaults->integerForKey("number"), -5);
    EXPECT_TRUE(defaults->boolForKey("yes"));
    EXPECT_EQ(defaults->stringForKey("list"), std::nullopt);
    EXPECT_EQ(defaults->stringForKey("size"), std::nullopt);
}

}  // namespace

}  // namespace tarvik::tests
