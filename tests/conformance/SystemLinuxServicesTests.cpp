#include <fcntl.h>
#include <unistd.h>

#include <QImage>
#include <QPalette>
#include <QPushButton>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "platform/linux/system/LinuxBundle.h"
#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "platform/linux/system/QtMenu.h"
#include "platform/linux/system/QtStatusItem.h"
#include "platform/linux/system/QtUserInterface.h"
#include "platform/linux/system/SystemLog.h"
#include "platform/linux/system/XdgLoginItem.h"
#include "tests/conformance/SystemLinuxTest.h"

namespace tarvik::conformance {

namespace {

std::string makeProgram(const std::filesystem::path& path, const std::string& script) {
    putFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
}

class TerminationTest : public SystemLinuxTest, public testing::WithParamInterface<int> {};

TEST_P(TerminationTest, ASignalEndsTheRunCleanly) {
    mainQueue.async([] { std::raise(GetParam()); });
    EXPECT_EQ(application.run(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminationTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(SystemLinuxTest, ASignalEndsTheRunAlsoWhileAnAlertIsUp) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    int answer = -1;
    mainQueue.async([&] {
        mainQueue.async([] { std::raise(SIGTERM); });
        platform::Alert alert;
        alert.messageText = "Question";
        alert.buttons = {"Save"};
        answer = userInterface.runModal(alert).code;
    });
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(answer, 0);
}

TEST_F(SystemLinuxTest, TheBundleKnowsItsVersionAndItsExecutable) {
    const linuxdesktop::LinuxBundle bundle;
    const std::optional<std::string> version =
        bundle.objectForInfoDictionaryKey("CFBundleShortVersionString");
    ASSERT_TRUE(version);
    EXPECT_NE(version->find('.'), std::string::npos);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("NoSuchKey"), std::nullopt);
    EXPECT_EQ(bundle.bundlePath(), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST_F(SystemLinuxTest, TheOpenCommandStartsTheExecutableThatFollowsInQuotes) {
    const std::string program =
        makeProgram(folder / "my program", "touch '" + (folder / "ran").string() + "'\n");
    linuxdesktop::ProcessTaskLauncher launcher;
    EXPECT_FALSE(launcher.launch(
        "/bin/sh",
        {"-c", "true && " + linuxdesktop::LinuxBundle().openCommand() + " \"" + program + "\""}));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(folder / "ran"); }));
}

TEST_F(SystemLinuxTest, ALaunchedProgramHasASessionOfItsOwnAndLeavesNoTrace) {
    std::signal(SIGUSR1, SIG_IGN);
    linuxdesktop::ProcessTaskLauncher launcher;
    const std::string result = folder / "result";
    EXPECT_FALSE(launcher.launch(
        "/bin/sh",
        {"-c", "echo $$ $(cut -d' ' -f6 /proc/$$/stat) $(grep SigIgn /proc/$$/status) > " + result +
                   ".part; mv " + result + ".part " + result}));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(result); }));
    std::istringstream words(contentOf(result));
    std::string process;
    std::string session;
    std::string label;
    std::string ignored;
    words >> process >> session >> label >> ignored;
    EXPECT_EQ(process, session);
    constexpr unsigned long long ours = 1ULL << (SIGPIPE - 1) | 1ULL << (SIGUSR1 - 1);
    EXPECT_EQ(std::stoull(ignored, nullptr, 16) & ours, 0U);
    EXPECT_TRUE(runUntil([&] { return !std::filesystem::exists("/proc/" + process); }));
    std::signal(SIGUSR1, SIG_DFL);
}

class LinkTest : public SystemLinuxTest {
  protected:
    LinkTest() {
        const char* path = std::getenv("PATH");
        savedPath_ = path != nullptr ? path : "";
        setenv("PATH", folder.path().c_str(), 1);
    }
    ~LinkTest() override { setenv("PATH", savedPath_.c_str(), 1); }

    linuxdesktop::ProcessTaskLauncher taskLauncher;
    linuxdesktop::LinuxWorkspace workspace{
        [] { return std::optional<platform::ProcessIdentifier>(4711); }, taskLauncher, clock, log};

  private:
    std::string savedPath_;
};

TEST_F(LinkTest, ALinkIsHandedToTheDesktop) {
    const std::string seen = folder / "seen";
    makeProgram(folder / "xdg-open",
                "echo \"$1\" > '" + seen + ".part'\n/bin/mv '" + seen + ".part' '" + seen + "'\n");
    EXPECT_TRUE(workspace.openUrl("https://tarvik.example/a?b=c%20d&e"));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(seen); }));
    EXPECT_EQ(contentOf(seen), "https://tarvik.example/a?b=c%20d&e\n");
}

TEST_F(LinkTest, WhatIsNoLinkOrCannotBeOpenedIsFalseWithALine) {
    EXPECT_FALSE(workspace.openUrl("https://tarvik.example"));
    EXPECT_EQ(log.linesWith("xdg-open is not installed").size(), 1U);
    makeProgram(folder / "xdg-open", "exit 0\n");
    EXPECT_FALSE(workspace.openUrl("--help"));
    EXPECT_EQ(log.linesWith("it is no link").size(), 1U);
}

TEST_F(LinkTest, TheFrontmostProcessBecomesAnApplication) {
    EXPECT_EQ(workspace.frontmostApplication()->processIdentifier(), 4711);
}

class LoginItemTest : public SystemLinuxTest {
  protected:
    LoginItemTest() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        program = makeProgram(folder / "my \"100%\" $program`\\", "exit 0\n");
        item.emplace(program);
    }

    std::string program;
    const std::filesystem::path entry = folder / "config/autostart/com.tarvik.dictate.desktop";
    std::optional<linuxdesktop::XdgLoginItem> item;
};

TEST_F(LoginItemTest, TheEntryQuotesAnAwkwardPathTwice) {
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

QImage drawn(const QIcon& icon, int side) {
    return icon.pixmap(side, side).toImage().convertToFormat(QImage::Format_ARGB32);
}

int solidPixels(const QImage& image, const QColor& color) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            count += image.pixelColor(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

TEST_F(SystemLinuxTest, TheStatusItemIsOutlinedInTheTextColourAndFilledInRed) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    linuxdesktop::QtStatusItem item(clock, log);
    const QColor text(1, 2, 3);
    QPalette palette;
    palette.setColor(QPalette::WindowText, text);
    QApplication::setPalette(palette);
    for (const int side : {16, 22, 32}) {
        item.setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
        item.setContentTintColor(std::nullopt);
        const int outlined = solidPixels(drawn(item.icon(), side), text);
        EXPECT_EQ(item.description(), "Tarvik Dictate");

        item.setImage(userInterface.systemSymbol("mic.fill", "Tarvik Dictate"));
        item.setContentTintColor(platform::SystemColor::red);
        const int filled = solidPixels(drawn(item.icon(), side), QColor(255, 59, 48));
        EXPECT_GT(outlined, 5) << side;
        EXPECT_GT(filled, outlined) << side;
        EXPECT_EQ(item.description(), "Tarvik Dictate – recording");
    }
}

TEST_F(SystemLinuxTest, AnUnknownSymbolIsNothing) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    EXPECT_EQ(userInterface.systemSymbol("waveform", "Tarvik Dictate"), nullptr);
    EXPECT_EQ(userInterface.systemSymbol("", ""), nullptr);
}

TEST_F(SystemLinuxTest, ATitleStandsInForAMissingPicture) {
    linuxdesktop::QtStatusItem item(clock, log);
    item.setContentTintColor(platform::SystemColor::red);
    item.setTitle("●");
    EXPECT_GT(solidPixels(drawn(item.icon(), 32), QColor(255, 59, 48)), 20);
}

TEST_F(SystemLinuxTest, KeyEquivalentsAreShownWithControlForCommand) {
    linuxdesktop::QtMenu menu;
    const auto entry = [](const char* title, const char* key, std::uint32_t modifiers) {
        platform::MenuItem item;
        item.title = title;
        item.keyEquivalent = key;
        item.modifierMask = modifiers;
        return item;
    };
    menu.setItems({entry("Setup…", ",", platform::commandKeyFlag),
                   entry("Restart", "r", platform::commandKeyFlag | platform::shiftKeyFlag),
                   entry("Redo", "Z", platform::commandKeyFlag),
                   entry("Nothing", "", platform::commandKeyFlag)});
    std::vector<std::string> shown;
    for (const QAction* action : menu.menu().actions()) {
        EXPECT_TRUE(action->isShortcutVisibleInContextMenu());
        shown.push_back(action->shortcut().toString(QKeySequence::PortableText).toStdString());
    }
    EXPECT_EQ(shown, (std::vector<std::string>{"Ctrl+,", "Ctrl+Shift+R", "Ctrl+Shift+Z", ""}));
}

}  // namespace

}  // namespace tarvik::conformance
