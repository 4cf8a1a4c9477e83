// SPDX-License-Identifier: MIT

#include <filesystem>
#include <optional>
#include <string>

#include "platform/linux/system/LinuxBundle.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

namespace {

using BundleTest = ApplicationTest;

TEST_F(BundleTest, TheBundleKnowsItsVersionAndItsExecutable) {
    const linuxdesktop::LinuxBundle bundle;
    const std::optional<std::string> version =
        bundle.objectForInfoDictionaryKey("CFBundleShortVersionString");
    ASSERT_TRUE(version);
    EXPECT_NE(version->find('.'), std::string::npos);
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("NoSuchKey"), std::nullopt);
    EXPECT_EQ(bundle.bundlePath(), std::filesystem::read_symlink("/proc/self/exe").string());
}

TEST_F(BundleTest, TheOpenCommandStartsTheExecutableThatFollowsInQuotes) {
    const std::string program = folder / "my program";
    putProgram(program, "touch '" + (folder / "ran").string() + "'\n");
    linuxdesktop::ProcessTaskLauncher launcher;
    EXPECT_FALSE(launcher.launch(
        "/bin/sh",
        {"-c", "true && " + linuxdesktop::LinuxBundle().openCommand() + " \"" + program + "\""}));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(folder / "ran"); }));
}

}  // namespace

}  // namespace tarvik::tests
