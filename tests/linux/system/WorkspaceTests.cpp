// SPDX-License-Identifier: MIT

#include <filesystem>
#include <vector>

#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "tests/linux/system/SessionBusTest.h"

namespace tarvik::tests {

namespace {

constexpr const char* microphoneLink =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone";
constexpr const char* accessibilityLink =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

/// A desktop with no programs but those that the test installs.
class WorkspaceTest : public SessionBusTest {
  protected:
    WorkspaceTest() {
        // The bus daemon runs already and needs no PATH.
        savedPath_ = std::getenv("PATH");
        setenv("PATH", folder.path().c_str(), 1);
    }
    ~WorkspaceTest() override {
        setenv("PATH", savedPath_.c_str(), 1);
        unsetenv("XDG_CURRENT_DESKTOP");
    }

    /// Installs programs that record their command lines.
    void install(const std::vector<std::string>& programs) {
        for (const std::string& program : programs) {
            putProgram(folder / program, "echo \"${0##*/} $*\" > '" + seen_ + ".part'\n/bin/mv '" +
                                             seen_ + ".part' '" + seen_ + "'\n");
        }
    }

    /// The command line that a program has recorded; waits for the record.
    std::string called() {
        EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(seen_); }));
        const std::string line = contentOf(seen_);
        std::filesystem::remove(seen_);
        return line;
    }

    std::string opened(const char* link, const char* desktop) {
        setenv("XDG_CURRENT_DESKTOP", desktop, 1);
        EXPECT_TRUE(workspace.openUrl(link));
        return called();
    }

    void startFileManager() {
        manager_.emplace(std::vector<std::string>{
            "/usr/bin/python3", "-u", "-m", "dbusmock", "--session", "org.freedesktop.FileManager1",
            "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1"});
        EXPECT_TRUE(runUntil([this] {
            return callFromOutside("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                   "org.freedesktop.DBus.Mock", "AddMethod",
                                   [](sd_bus_message* message) {
                                       sd_bus_message_append(message, "sssss",
                                                             "org.freedesktop.FileManager1",
                                                             "ShowItems", "ass", "", "");
                                   })
                .empty();
        }));
    }

    /// The next request to show a file that reaches the file manager; waits for the request.
    std::string shown() {
        return meanwhile([this] {
            std::optional<std::string> line;
            do {
                line = manager_->readLine();
            } while (line && line->find("ShowItems") == std::string::npos);
            return line.value_or("");
        });
    }

    linuxdesktop::ProcessTaskLauncher taskLauncher;
    linuxdesktop::LinuxWorkspace workspace{
        [] { return std::optional<platform::ProcessIdentifier>(4711); }, taskLauncher, clock, log};

  private:
    std::optional<TestProcess> manager_;
    std::string savedPath_;
    std::string seen_ = folder / "seen";
};

TEST_F(WorkspaceTest, TheFrontmostProcessBecomesAnApplication) {
    EXPECT_EQ(workspace.frontmostApplication()->processIdentifier(), 4711);
}

TEST_F(WorkspaceTest, ALinkIsHandedToTheDesktop) {
    install({"xdg-open"});
    EXPECT_TRUE(workspace.openUrl("https://tarvik.example/a?b=c%20d&e"));
    EXPECT_EQ(called(), "xdg-open https://tarvik.example/a?b=c%20d&e\n");
}

TEST_F(WorkspaceTest, WhatIsNoLinkOrCannotBeOpenedIsFalseWithALine) {
    EXPECT_FALSE(workspace.openUrl("https://tarvik.example"));
    EXPECT_EQ(log.linesWith("xdg-open is not installed").size(), 1U);
    install({"xdg-open"});
    EXPECT_FALSE(workspace.openUrl("--help"));
    EXPECT_EQ(log.linesWith("it is no link").size(), 1U);
}

TEST_F(WorkspaceTest, EachDesktopOpensItsOwnPanels) {
    install({"gnome-control-center", "systemsettings", "pavucontrol",
             "xfce4-accessibility-settings", "cinnamon-settings", "mate-volume-control",
             "mate-at-properties", "pavucontrol-qt"});
    struct Expectation {
        const char* desktop;
        const char* microphone;
        const char* accessibility;
    };
    for (const Expectation& expected :
         {Expectation{"GNOME", "gnome-control-center sound\n",
                      "gnome-control-center universal-access\n"},
          {"ubuntu:GNOME", "gnome-control-center sound\n",
           "gnome-control-center universal-access\n"},
          {"KDE", "systemsettings kcm_pulseaudio\n", "systemsettings kcm_access\n"},
          {"XFCE", "pavucontrol --tab=4\n", "xfce4-accessibility-settings \n"},
          {"X-Cinnamon", "cinnamon-settings sound\n", "cinnamon-settings universal-access\n"},
          {"MATE", "mate-volume-control \n", "mate-at-properties \n"}}) {
        EXPECT_EQ(opened(microphoneLink, expected.desktop), expected.microphone);
        EXPECT_EQ(opened(accessibilityLink, expected.desktop), expected.accessibility);
    }
    EXPECT_EQ(opened(microphoneLink, "LXQt"), "pavucontrol-qt --tab=4\n");
    EXPECT_EQ(opened(microphoneLink, "i3"), "pavucontrol --tab=4\n");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(WorkspaceTest, AnotherReleaseOfTheDesktopOrTheUsualMixerStandsIn) {
    install({"systemsettings5", "pavucontrol"});
    EXPECT_EQ(opened(accessibilityLink, "KDE"), "systemsettings5 kcm_access\n");
    EXPECT_EQ(opened(microphoneLink, "GNOME"), "pavucontrol --tab=4\n");
}

TEST_F(WorkspaceTest, OneLineSaysWhatIsMissing) {
    setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    EXPECT_FALSE(workspace.openUrl(microphoneLink));
    EXPECT_EQ(log.linesWith("not installed: gnome-control-center, pavucontrol").size(), 1U);
    EXPECT_FALSE(workspace.openUrl(accessibilityLink));
    EXPECT_EQ(log.linesWith("not installed: gnome-control-center").size(), 2U);
    setenv("XDG_CURRENT_DESKTOP", "i3", 1);
    EXPECT_FALSE(workspace.openUrl(accessibilityLink));
    EXPECT_EQ(log.linesWith("no settings are known of this desktop (i3)").size(), 1U);
    EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(WorkspaceTest, AFileIsShownByTheFileManager) {
    startFileManager();
    install({"xdg-open"});
    workspace.activateFileViewerSelecting("/opt/my folder/tarvik-dictate");
    EXPECT_NE(shown().find("file:///opt/my%20folder/tarvik-dictate"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "seen"));
}

TEST_F(WorkspaceTest, WithoutAFileManagerOnTheBusTheFolderIsOpened) {
    install({"xdg-open"});
    workspace.activateFileViewerSelecting("/opt/my folder/tarvik-dictate");
    EXPECT_EQ(called(), "xdg-open file:///opt/my%20folder\n");
}

TEST_F(WorkspaceTest, WithoutASessionBusTheFolderIsOpened) {
    install({"xdg-open"});
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    workspace.activateFileViewerSelecting("/opt/tarvik-dictate");
    EXPECT_EQ(called(), "xdg-open file:///opt\n");
}

TEST_F(WorkspaceTest, ABusThatCameBackIsUsedAgain) {
    install({"xdg-open"});
    workspace.activateFileViewerSelecting("/opt/tarvik-dictate");
    EXPECT_EQ(called(), "xdg-open file:///opt\n");
    bus.reset();
    // The connection notices the loss only in a later turn.
    workspace.activateFileViewerSelecting("/opt/tarvik-dictate");
    EXPECT_EQ(called(), "xdg-open file:///opt\n");
    startBus();
    startFileManager();
    workspace.activateFileViewerSelecting("/opt/tarvik-dictate");
    EXPECT_NE(shown().find("file:///opt/tarvik-dictate"), std::string::npos);
}

}  // namespace

}  // namespace tarvik::tests
