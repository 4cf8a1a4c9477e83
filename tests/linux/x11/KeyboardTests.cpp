// SPDX-License-Identifier: MIT

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/x11/Keyboard.h"
#include "tests/linux/x11/InputFixture.h"
#include "tests/linux/x11/X11Server.h"

namespace tarvik::tests {

namespace {

using namespace std::string_literals;
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

// One key stays silent.
TEST_P(X11Keyboard, ServesTwoCharactersWithEachSpareKey) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    const int withoutSymbol = user.keysWithoutSymbol();
    const auto silent = keyboard.silentKey();
    ASSERT_TRUE(silent);
    const auto spare = static_cast<std::size_t>(withoutSymbol - 1);
    EXPECT_EQ(keyboard.freeStrokes({}), 2 * spare);
    std::set<char32_t> characters;
    for (char32_t character = U'あ'; characters.size() < 2 * spare; ++character) {
        characters.insert(character);
    }
    keyboard.remapKeys(characters, characters);
    keyboard.reread();
    EXPECT_EQ(keyboard.freeStrokes(characters), 0U);
    std::set<std::pair<xcb_keycode_t, bool>> strokes;
    for (const char32_t character : characters) {
        const auto stroke = keyboard.strokeFor(character, 0, {});
        ASSERT_TRUE(stroke);
        EXPECT_NE(stroke->key, silent);
        strokes.insert({stroke->key, stroke->isShifted});
    }
    EXPECT_EQ(strokes.size(), 2 * spare);
    keyboard.restore();
    connection->synchronise();
    EXPECT_EQ(user.keysWithoutSymbol(), withoutSymbol);
}

TEST_P(X11Keyboard, ReusesTheKeysThatWereNeededTheLongestAgo) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    const std::size_t free = keyboard.freeStrokes({});
    std::set<char32_t> older;
    std::set<char32_t> newer;
    for (char32_t character = U'あ'; older.size() + newer.size() < free; ++character) {
        (character % 2 == 0 ? older : newer).insert(character);
    }
    keyboard.remapKeys(older, {});
    keyboard.remapKeys(newer, {});
    const char32_t kept = *older.begin();
    keyboard.remapKeys({U'漢', U'字'}, {kept});
    EXPECT_TRUE(keyboard.strokeFor(U'漢', 0, {}));
    EXPECT_TRUE(keyboard.strokeFor(U'字', 0, {}));
    EXPECT_TRUE(keyboard.strokeFor(kept, 0, {}));
    for (const char32_t character : newer) {
        EXPECT_TRUE(keyboard.strokeFor(character, 0, {}));
    }
    const auto lost = std::ranges::count_if(
        older, [&](char32_t character) { return !keyboard.strokeFor(character, 0, {}); });
    EXPECT_EQ(lost, 2);
    keyboard.restore();
}

TEST_P(X11Keyboard, LendsAnotherKeyWhereTheFirstOneIsDown) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    const int withoutSymbol = user.keysWithoutSymbol();
    keyboard.remapKeys({U'あ'}, {});
    const auto first = keyboard.strokeFor(U'あ', 0, {});
    ASSERT_TRUE(first);
    linuxdesktop::KeysDown down;
    down[first->key] = true;
    EXPECT_FALSE(keyboard.strokeFor(U'あ', 0, down));
    EXPECT_EQ(keyboard.freeStrokes({}, down), keyboard.freeStrokes({}) - 2);
    keyboard.remapKeys({U'あ'}, {U'あ'}, down);
    const auto second = keyboard.strokeFor(U'あ', 0, down);
    ASSERT_TRUE(second);
    EXPECT_NE(second->key, first->key);
    // A program may have yet to look it up.
    EXPECT_EQ(user.symbol(first->key), 0x01003042U);
    keyboard.restore();
    connection->synchronise();
    EXPECT_EQ(user.keysWithoutSymbol(), withoutSymbol);
}

// The user's layout types these without a change of the map.
TEST_P(X11Keyboard, TypesTheLayoutsOwnCharactersWithShift) {
    InputFixture::setLayout(GetParam());
    keyboard.reread();
    for (const char32_t character : U"Ab!?"s) {
        EXPECT_TRUE(keyboard.strokeFor(character, 0, {}));
    }
    const auto capital = keyboard.strokeFor(U'A', 0, {});
    const auto small = keyboard.strokeFor(U'a', 0, {});
    ASSERT_TRUE(capital && small);
    EXPECT_TRUE(capital->isShifted);
    EXPECT_FALSE(small->isShifted);
    EXPECT_EQ(capital->key, small->key);
    linuxdesktop::KeysDown down;
    down[small->key] = true;
    EXPECT_FALSE(keyboard.strokeFor(U'a', 0, down));
}

INSTANTIATE_TEST_SUITE_P(
    , X11Keyboard,
    testing::Values(std::vector<std::string>{"us"}, std::vector<std::string>{"us,ru"},
                    std::vector<std::string>{"de,ru,gr"}, std::vector<std::string>{"us,ru,gr,il"},
                    std::vector<std::string>{"us,us", "-variant", ",intl"}),
    [](const auto& layout) { return "Layouts" + std::to_string(layout.index); });

}  // namespace

}  // namespace tarvik::tests
