#include <fcntl.h>
#include <unistd.h>

#include <QImage>
#include <QPainter>
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
#include "platform/linux/system/SystemLog.h"
#include "platform/linux/system/XdgLoginItem.h"
#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/QtStatusItem.h"
#include "platform/linux/windows/QtUserInterface.h"
#include "tests/linux/system/ApplicationTest.h"
#include "tests/linux/windows/Contrast.h"

namespace tarvik::tests {

namespace {

class TerminationTest : public ApplicationTest, public testing::WithParamInterface<int> {};

TEST_P(TerminationTest, ASignalEndsTheRunCleanly) {
    mainQueue.async([] { std::raise(GetParam()); });
    EXPECT_EQ(application.run(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminationTest, testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(ApplicationTest, ASignalEndsTheRunAlsoWhileAnAlertIsUp) {
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

TEST_F(ApplicationTest, AWaylandTokenIsThereForTheWindowThatItsUserAskedForAndNoLonger) {
    class Delegate final : public platform::ApplicationDelegate {
      public:
        explicit Delegate(platform::Application& application) : application_(application) {}
        void applicationDidFinishLaunching(const platform::LaunchNotification&) override {}
        bool applicationShouldHandleReopen(bool) override {
            token = qgetenv("XDG_ACTIVATION_TOKEN").toStdString();
            application_.terminate();
            return true;
        }
        void applicationShouldPerform(platform::ApplicationAction) override {}

        std::string token;

      private:
        platform::Application& application_;
    };
    const auto delegate = std::make_shared<Delegate>(application);
    application.setDelegate(delegate);
    application.reopen("token");
    EXPECT_EQ(application.run(), 0);
    EXPECT_EQ(delegate->token, "token");
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}

TEST_F(ApplicationTest, TheBundleKnowsItsVersionAndItsExecutable) {
    const linuxdesktop::LinuxBundle bundle;
    const std::optional<std::string> version =
        bundle.objectForInfoDictionaryKey("CFBundleShortVersionString");
    ASSERT_TRUE(version);
    EXPECT_NE(version->find('.'), std::string::npos);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("NoSuchKey"), std::nullopt);
    EXPECT_EQ(bundle.bundlePath(), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST_F(ApplicationTest, TheOpenCommandStartsTheExecutableThatFollowsInQuotes) {
    const std::string program = folder / "my program";
    putProgram(program, "touch '" + (folder / "ran").string() + "'\n");
    linuxdesktop::ProcessTaskLauncher launcher;
    EXPECT_FALSE(launcher.launch(
        "/bin/sh",
        {"-c", "true && " + linuxdesktop::LinuxBundle().openCommand() + " \"" + program + "\""}));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(folder / "ran"); }));
}

TEST_F(ApplicationTest, ALaunchedProgramHasASessionOfItsOwnAndLeavesNoTrace) {
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

class LinkTest : public ApplicationTest {
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
    putProgram(folder / "xdg-open",
               "echo \"$1\" > '" + seen + ".part'\n/bin/mv '" + seen + ".part' '" + seen + "'\n");
    EXPECT_TRUE(workspace.openUrl("https://tarvik.example/a?b=c%20d&e"));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(seen); }));
    EXPECT_EQ(contentOf(seen), "https://tarvik.example/a?b=c%20d&e\n");
}

TEST_F(LinkTest, WhatIsNoLinkOrCannotBeOpenedIsFalseWithALine) {
    EXPECT_FALSE(workspace.openUrl("https://tarvik.example"));
    EXPECT_EQ(log.linesWith("xdg-open is not installed").size(), 1U);
    putProgram(folder / "xdg-open", "exit 0\n");
    EXPECT_FALSE(workspace.openUrl("--help"));
    EXPECT_EQ(log.linesWith("it is no link").size(), 1U);
}

TEST_F(LinkTest, TheFrontmostProcessBecomesAnApplication) {
    EXPECT_EQ(workspace.frontmostApplication()->processIdentifier(), 4711);
}

class LoginItemTest : public ApplicationTest {
  protected:
    LoginItemTest() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        program = folder / "my \"100%\" $program`\\";
        putProgram(program, "exit 0\n");
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

TEST_F(LoginItemTest, AProgramWithoutAPathIsLookedForWhereProgramsAre) {
    const auto statusWith = [&](const char* name) {
        putFile(entry, std::string("[Desktop Entry]\nExec=x\nTryExec=") + name + "\n");
        return item->status();
    };
    EXPECT_EQ(statusWith("sh"), platform::LoginItemStatus::enabled);
    EXPECT_EQ(statusWith("no-such-program"), platform::LoginItemStatus::notRegistered);
}

/// What is seen of an icon on a panel.
struct Impression {
    /// The smallest rectangle around all pixels that stand out from the panel.
    QRect extent;
    int pixels = 0;
};

QImage drawn(const QIcon& icon, int side, const QColor& panel) {
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(panel);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, icon.pixmap(side, side));
    return image;
}

Impression impressionOf(const QImage& image, const QColor& panel) {
    Impression seen;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (contrast(image.pixelColor(x, y), panel) >= 3) {
                seen.extent |= QRect(x, y, 1, 1);
                ++seen.pixels;
            }
        }
    }
    return seen;
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

const QColor recordingRed(255, 59, 48);
const QColor darkPanel(0x35, 0x35, 0x35);

TEST_F(ApplicationTest, TheIdleIconIsAnOutlineThatIsReadableOnEveryPanel) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    linuxdesktop::QtStatusItem item(clock, log);
    item.setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
    EXPECT_EQ(item.description(), "Tarvik Dictate");
    for (const QColor& panel :
         {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkPanel, QColor(Qt::black)}) {
        for (const int side : {16, 22, 32}) {
            const QImage image = drawn(item.icon(), side, panel);
            const auto [extent, pixels] = impressionOf(image, panel);
            const std::string which = panel.name().toStdString() + " " + std::to_string(side);
            EXPECT_GE(extent.height(), side * 8 / 10) << which;
            EXPECT_GE(extent.width(), side / 2) << which;
            EXPECT_GE(pixels, extent.width() * extent.height() / 5) << which;
            // The microphone itself is hollow.
            EXPECT_LT(contrast(image.pixelColor(side / 2, side / 3), panel), 2) << which;
            // Windows may have other colours than the panel.
            QApplication::setPalette(QPalette(Qt::black, Qt::black));
            EXPECT_EQ(drawn(item.icon(), side, panel), image) << which;
            QApplication::setPalette(QPalette());
        }
    }
}

TEST_F(ApplicationTest, WhileRecordingTheIconIsFilledInRed) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    linuxdesktop::QtStatusItem item(clock, log);
    item.setImage(userInterface.systemSymbol("mic.fill", "Tarvik Dictate"));
    item.setContentTintColor(platform::SystemColor::red);
    EXPECT_EQ(item.description(), "Tarvik Dictate – recording");
    for (const QColor& panel : {QColor(Qt::white), darkPanel}) {
        for (const int side : {16, 22, 32}) {
            const QImage image = drawn(item.icon(), side, panel);
            const auto [extent, pixels] = impressionOf(image, panel);
            EXPECT_GE(extent.height(), side * 8 / 10) << side;
            EXPECT_GE(solidPixels(image, recordingRed), extent.width() * extent.height() / 4)
                << side;
            EXPECT_EQ(image.pixelColor(side / 2, side / 3), recordingRed) << side;
        }
    }
}

TEST_F(ApplicationTest, AnUnknownSymbolIsNothing) {
    linuxdesktop::QtUserInterface userInterface(clock, log);
    EXPECT_EQ(userInterface.systemSymbol("waveform", "Tarvik Dictate"), nullptr);
    EXPECT_EQ(userInterface.systemSymbol("", ""), nullptr);
}

TEST_F(ApplicationTest, ATitleStandsInForAMissingPicture) {
    linuxdesktop::QtStatusItem item(clock, log);
    for (const QColor& panel : {QColor(Qt::white), darkPanel}) {
        item.setContentTintColor(std::nullopt);
        item.setTitle("○");
        EXPECT_GT(impressionOf(drawn(item.icon(), 32, panel), panel).pixels, 20);
        item.setContentTintColor(platform::SystemColor::red);
        item.setTitle("●");
        EXPECT_GT(solidPixels(drawn(item.icon(), 32, panel), recordingRed), 20);
    }
}

TEST_F(ApplicationTest, KeyEquivalentsAreShownWithControlForCommand) {
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

}  // namespace tarvik::tests
