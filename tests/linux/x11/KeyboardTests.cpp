// SPDX-License-Identifier: MIT

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/x11/Keyboard.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/X11Server.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::Keyboard;
using linuxdesktop::XcbConnection;

const std::set<char32_t> someCharacters{U'ą', U'日', U'😀'};

// Of the layouts that a person switches between the server keeps all at once, as groups. The server
// is one without a window manager, which needs a while to follow so many changes.
class X11Keyboard : public testing::TestWithParam<std::vector<std::string>> {
  protected:
    RealTimeQueue mainQueue;
    X11Server server{mainQueue};
    X11User user;
    std::unique_ptr<XcbConnection> connection = XcbConnection::open().value();
    Keyboard keyboard{*connection};
};

TEST_P(X11Keyboard, GivesBackTheKeysLentUnderThisLayout) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    const int spare = user.keysWithoutSymbol();
    const std::size_t free = keyboard.freeStrokes({});
    ASSERT_GT(free, 10U);
    for (int i = 0; i < 2; ++i) {
        keyboard.remapKeys(someCharacters, {});
        keyboard.reread();
        for (const char32_t character : someCharacters) {
            EXPECT_TRUE(keyboard.strokeFor(character, 0, {})) << "in round " << i;
        }
        EXPECT_EQ(keyboard.freeStrokes(someCharacters), free - 3);
        keyboard.restore();
        keyboard.reread();
        ASSERT_EQ(keyboard.freeStrokes({}), free);
    }
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

TEST_P(X11Keyboard, GivesBackTheKeysLentBeforeASwitchToThisLayout) {
    InputFixture::setLayout(GetParam());
    const int spare = user.keysWithoutSymbol();
    InputFixture::setLayout({"us"});
    keyboard.reread();
    keyboard.remapKeys(someCharacters, {});
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    keyboard.restore();
    connection->synchronise();
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

// The server then keeps a remapped letter as one of a key with capitals, and not as it was written.
TEST_P(X11Keyboard, KnowsTheKeysLentAfterAnotherProgramHasWrittenTheMapBack) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    const int spare = user.keysWithoutSymbol();
    const std::size_t free = keyboard.freeStrokes({});
    keyboard.remapKeys(someCharacters, {});
    connection->synchronise();
    user.writeMapBack();
    keyboard.reread();
    for (const char32_t character : someCharacters) {
        EXPECT_TRUE(keyboard.strokeFor(character, 0, {}));
    }
    keyboard.restore();
    keyboard.reread();
    EXPECT_EQ(keyboard.freeStrokes({}), free);
    EXPECT_EQ(user.keysWithoutSymbol(), spare);
}

INSTANTIATE_TEST_SUITE_P(
    , X11Keyboard,
    testing::Values(std::vector<std::string>{"us"}, std::vector<std::string>{"us,ru"},
                    std::vector<std::string>{"de,ru,gr"}, std::vector<std::string>{"us,ru,gr,il"},
                    std::vector<std::string>{"us,us", "-variant", ",intl"}),
    [](const auto& layout) { return "Layouts" + std::to_string(layout.index); });

}  // namespace

}  // namespace tarvik::tests
