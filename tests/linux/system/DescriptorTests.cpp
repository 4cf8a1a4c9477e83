// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux/system/StandardDescriptors.h"

namespace tarvik::tests {

namespace {

/// Ends the process with the number that the next descriptor gets.
[[noreturn]] void exitWithNextDescriptor() {
    linuxdesktop::openStandardDescriptors();
    _exit(open("/", O_RDONLY | O_CLOEXEC));
}

TEST(StandardDescriptorsDeathTest, NoFileTakesThePlaceOfAClosedStream) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        EXPECT_EXIT(
            {
                closefrom(STDERR_FILENO + 1);
                close(stream);
                exitWithNextDescriptor();
            },
            testing::ExitedWithCode(STDERR_FILENO + 1), "");
    }
    EXPECT_EXIT(
        {
            closefrom(STDIN_FILENO);
            exitWithNextDescriptor();
        },
        testing::ExitedWithCode(STDERR_FILENO + 1), "");
}

TEST(StandardDescriptorsDeathTest, AnOpenStreamStaysWhatItIs) {
    EXPECT_EXIT(
        {
            linuxdesktop::openStandardDescriptors();
            constexpr char line[] = "still heard";
            _exit(write(STDERR_FILENO, line, sizeof line) == sizeof line ? EXIT_SUCCESS
                                                                         : EXIT_FAILURE);
        },
        testing::ExitedWithCode(EXIT_SUCCESS), "still heard");
}

}  // namespace

}  // namespace tarvik::tests
