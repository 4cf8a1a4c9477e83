// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/linux/wayland/NarrowKeys.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::hasNarrowKeys;

TEST(NarrowKeys, AreThoseOfAProgramBesideThePicturesOfChromium) {
    const TemporaryFolder folder;
    const auto program = folder.path() / "any-name";
    std::filesystem::copy_file("/bin/cat", program);
    TestProcess process({program.string()});
    // The program runs once it answers.
    process.write("ready\n");
    ASSERT_EQ(process.readLine(), "ready");
    EXPECT_FALSE(hasNarrowKeys(process.identifier()));
    std::ofstream(folder.path() / "chrome_100_percent.pak") << "";
    EXPECT_TRUE(hasNarrowKeys(process.identifier()));
}

TEST(NarrowKeys, AreNotThoseOfAnotherProgramOrOfNone) {
    EXPECT_FALSE(hasNarrowKeys(getpid()));
    EXPECT_FALSE(hasNarrowKeys(0));
}

}  // namespace

}  // namespace tarvik::tests
