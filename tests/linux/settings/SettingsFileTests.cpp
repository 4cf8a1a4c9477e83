// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QSettings>
#include <QSize>
#include <filesystem>
#include <string>

#include "tests/linux/loop/ThreadShortage.h"
#include "tests/linux/settings/SettingsFileTest.h"

namespace tarvik::tests {

namespace {

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
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "TarvikDictate: the setting list is no text that can be read",
                               "TarvikDictate: the setting variant is no text that can be read"}));
}

// The entry stays as it is, and its value may be a secret.
TEST_F(SettingsFileTest, AnEntryThatIsNoTextIsReportedOnce) {
    const std::string content = "[General]\ndeepgramApiKey=\"a\\x00key\"\nlist=a, b\n";
    putFile(path, content);
    open();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(defaults->stringForKey("deepgramApiKey"), std::nullopt);
        EXPECT_EQ(defaults->stringForKey("list"), std::nullopt);
        EXPECT_EQ(defaults->stringForKey("absent"), std::nullopt);
    }
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{
                  "TarvikDictate: the setting deepgramApiKey is no text that can be read",
                  "TarvikDictate: the setting list is no text that can be read"}));
    close();
    EXPECT_EQ(contentOf(path), content);
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
