// SPDX-License-Identifier: MIT

#include <filesystem>
#include <set>
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

    linuxdesktop::ProcessTaskLauncher taskLauncher;
    linuxdesktop::LinuxWorkspace workspace{
        [] { return std::optional<platform::ProcessIdentifier>(4711); },
        [this](linuxdesktop::SettingsPanel panel) { return missing.contains(panel); }, taskLauncher,
        clock, log};
    std::set<linuxdesktop::SettingsPanel> missing = {linuxdesktop::SettingsPanel::microphone,
                                                     linuxdesktop::SettingsPanel::accessibility};

  private:
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

TEST_F(WorkspaceTest, APanelIsOpenedOnlyWhileSomethingIsMissing) {
    install({"gnome-control-center"});
    setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    missing = {linuxdesktop::SettingsPanel::accessibility};
    EXPECT_TRUE(workspace.openUrl(microphoneLink));
    EXPECT_EQ(opened(accessibilityLink, "GNOME"), "gnome-control-center universal-access\n");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(WorkspaceTest, NoFileManagerShowsTheProgram) {
    install({"xdg-open"});
    workspace.activateFileViewerSelecting("/opt/tarvik-dictate");
    // The program after it is the only one that was started.
    EXPECT_TRUE(workspace.openUrl("https://tarvik.example"));
    EXPECT_EQ(called(), "xdg-open https://tarvik.example\n");
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace

}  // namespace tarvik::tests
