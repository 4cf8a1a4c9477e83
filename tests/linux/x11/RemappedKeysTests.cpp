// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <set>

#include "platform/linux/x11/Keyboard.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/X11Server.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::Keyboard;
using linuxdesktop::XcbConnection;

const std::set<char32_t> remappedCharacters{U'ą', U'日', U'😀'};

/// One instance of the program, as far as the keyboard map sees it.
struct Instance {
    Instance() {
        keyboard.restore();
        keyboard.reread();
    }

    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
    Keyboard keyboard{*connection};
};

// On a server without a window manager, which needs a while to follow so many changes.
class X11RemappedKeys : public testing::Test {
  protected:
    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    RecordingLog log;
    X11User user;
    const int spare = user.keysWithoutSymbol();

    // A process that remaps keys and is killed before it can restore them.
    void remapAndGetKilled() {
        std::array<int, 2> pipe{};
        ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            Instance instance;
            instance.keyboard.remapKeys(remappedCharacters, {});
            instance.connection->synchronise();
            [[maybe_unused]] const auto written = write(pipe[1], "", 1);
            for (;;) {
                pause();
            }
        }
        close(pipe[1]);
        char isRemapped = 1;
        EXPECT_EQ(read(pipe[0], &isRemapped, 1), 1);
        close(pipe[0]);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
};

TEST_F(X11RemappedKeys, AreGivenBackByTheNextInstanceAfterAKill) {
    remapAndGetKilled();
    EXPECT_EQ(user.keysWithoutSymbol(), spare - 3);
    const linuxdesktop::DesktopInput next(mainQueue, log);
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

// The server gives the number of a client that has ended, and so those of its windows, to the next.
TEST_F(X11RemappedKeys, AreGivenBackByALaterClientWhileAnotherHasTheNumberOfTheKilledOne) {
    remapAndGetKilled();
    const X11User heir;
    Instance next;
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
    // One key stays silent.
    EXPECT_EQ(next.keyboard.freeStrokes({}), 2 * static_cast<std::size_t>(spare - 1));
}

TEST_F(X11RemappedKeys, AreGivenBackAfterManyKillsUnderAnyLayout) {
    InputFixture::setLayout({"us,ru"});
    const int spareHere = user.keysWithoutSymbol();
    for (int i = 0; i < 5; ++i) {
        remapAndGetKilled();
    }
    EXPECT_EQ(user.keysWithoutSymbol(), spareHere - 3);
    const Instance next;
    EXPECT_EQ(user.keysWithoutSymbol(), spareHere);
}

TEST_F(X11RemappedKeys, AreLeftToAnInstanceThatLives) {
    Instance first;
    first.keyboard.remapKeys(remappedCharacters, {});
    {
        Instance second;
        for (const char32_t character : remappedCharacters) {
            EXPECT_FALSE(second.keyboard.strokeFor(character, 0, {}));
        }
        second.keyboard.remapKeys({U'ą', U'ж'}, {});
        for (const char32_t character : {U'ą', U'ж'}) {
            EXPECT_TRUE(second.keyboard.strokeFor(character, 0, {}));
        }
        EXPECT_EQ(user.keysWithoutSymbol(), spare - 5);
        first.keyboard.reread();
        EXPECT_NE(first.keyboard.strokeFor(U'ą', 0, {}), second.keyboard.strokeFor(U'ą', 0, {}));
        second.keyboard.restore();
    }
    EXPECT_EQ(user.keysWithoutSymbol(), spare - 3);
    first.keyboard.reread();
    for (const char32_t character : remappedCharacters) {
        EXPECT_TRUE(first.keyboard.strokeFor(character, 0, {}));
    }
    first.keyboard.restore();
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

TEST_F(X11RemappedKeys, AreNotTakenByTwoAtOnce) {
    Instance first;
    Instance second;
    first.keyboard.remapKeys({U'ą'}, {});
    // The second has not heard of that yet.
    second.keyboard.remapKeys({U'ж'}, {});
    first.keyboard.reread();
    EXPECT_TRUE(first.keyboard.strokeFor(U'ą', 0, {}));
    EXPECT_TRUE(second.keyboard.strokeFor(U'ж', 0, {}));
    first.keyboard.restore();
    second.keyboard.restore();
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

TEST_F(X11RemappedKeys, AreLeftAloneOnceAnotherProgramHasGivenThemAnotherSymbol) {
    remapAndGetKilled();
    InputFixture::setLayout({"de"});
    const int spareHere = user.keysWithoutSymbol();
    const Instance next;
    EXPECT_EQ(user.keysWithoutSymbol(), spareHere);
}

}  // namespace

}  // namespace tarvik::tests
