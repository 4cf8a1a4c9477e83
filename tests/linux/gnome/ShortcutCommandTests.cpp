// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <string>

#include "platform/linux/gnome/ShortcutPress.h"
#include "platform/linux/loop/LocalSocket.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::LocalSocket;
using linuxdesktop::ShortcutPress;
using std::chrono::steady_clock;

// The system counts the start of a process in hundredths of a second.
constexpr auto tick = std::chrono::milliseconds(10);

class ShortcutCommand : public testing::Test {
  protected:
    ShortcutPress received() const {
        ShortcutPress press;
        EXPECT_EQ(recv(socket.number(), &press, sizeof press, MSG_DONTWAIT), ssize_t{sizeof press});
        return press;
    }
    static steady_clock::time_point timeOf(const ShortcutPress& press) {
        return steady_clock::time_point(std::chrono::nanoseconds(press.nanoseconds));
    }

    TemporaryFolder folder;
    const std::string path = folder / "socket";
    LocalSocket socket{path, SOCK_DGRAM};
};

TEST_F(ShortcutCommand, NamesItsHotkey) {
    for (const auto* word : {linuxdesktop::holdWord, linuxdesktop::toggleWord}) {
        EXPECT_EQ(TestProcess::run({TARVIK_SHORTCUT_COMMAND, path, word}).status, 0);
        EXPECT_EQ(received().isToggle, word == linuxdesktop::toggleWord ? 1U : 0U);
    }
    EXPECT_NE(TestProcess::run({TARVIK_SHORTCUT_COMMAND, path}).status, 0);
}

// A busy machine may give the process no processor for a while.
TEST_F(ShortcutCommand, TellsWhenItsProcessWasMadeHoweverLateTheProcessRuns) {
    const auto start = steady_clock::now();
    TestProcess process({"sh", "-c", R"(echo made; read -r line; exec "$0" "$@")",
                         TARVIK_SHORTCUT_COMMAND, path, linuxdesktop::holdWord});
    ASSERT_EQ(process.readLine(), "made");
    const auto made = steady_clock::now();
    process.write("\n");
    ASSERT_EQ(process.waitForEnd(), 0);
    const auto told = timeOf(received());
    EXPECT_GE(told, start - tick);
    EXPECT_LE(told, made);
}

}  // namespace

}  // namespace tarvik::tests
