// SPDX-License-Identifier: MIT

#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>

#include "platform/linux/loop/FileDescriptor.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

namespace {

using TaskLauncherTest = ApplicationTest;

TEST_F(TaskLauncherTest, ALaunchedProgramHasASessionOfItsOwnAndLeavesNoTrace) {
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

TEST_F(TaskLauncherTest, ALaunchedProgramInheritsTheStandardStreamsOnly) {
    const linuxdesktop::FileDescriptor inheritable(dup(STDIN_FILENO));
    linuxdesktop::ProcessTaskLauncher launcher;
    const std::string result = folder / "result";
    EXPECT_FALSE(launcher.launch("/bin/sh", {"-c", "ls /proc/self/fd > " + result + ".part; mv " +
                                                       result + ".part " + result}));
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(result); }));
    // The fourth one is the folder that is listed.
    EXPECT_EQ(contentOf(result), "0\n1\n2\n3\n");
}

}  // namespace

}  // namespace tarvik::tests
