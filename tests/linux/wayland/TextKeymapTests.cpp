// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <string>

#include "platform/linux/wayland/TextKeymap.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::TextKeymap;

// How a program reads a keyboard with this map.
class Reader {
  public:
    explicit Reader(const TextKeymap& keymap)
        : context_(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)),
          keymap_(xkb_keymap_new_from_string(context_, keymap.text().c_str(),
                                             XKB_KEYMAP_FORMAT_TEXT_V1,
                                             XKB_KEYMAP_COMPILE_NO_FLAGS)) {}
    ~Reader() {
        xkb_keymap_unref(keymap_);
        xkb_context_unref(context_);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool isValid() const { return keymap_ != nullptr; }
    xkb_keymap* keymap() const { return keymap_; }

    char32_t characterOf(TextKeymap::Stroke stroke) const {
        const std::unique_ptr<xkb_state, decltype(&xkb_state_unref)> state(xkb_state_new(keymap_),
                                                                           &xkb_state_unref);
        xkb_state_update_mask(state.get(), stroke.modifiers, 0, 0, 0, 0, 0);
        return xkb_state_key_get_utf32(state.get(), stroke.key + 8);
    }
    xkb_keysym_t symbolOf(TextKeymap::Stroke stroke) const {
        const std::unique_ptr<xkb_state, decltype(&xkb_state_unref)> state(xkb_state_new(keymap_),
                                                                           &xkb_state_unref);
        return xkb_state_key_get_one_sym(state.get(), stroke.key + 8);
    }

  private:
    xkb_context* context_;
    xkb_keymap* keymap_;
};

TEST(TextKeymap, HasAsciiFromTheStart) {
    TextKeymap keymap;
    std::u32string ascii;
    for (char32_t character = U' '; character <= U'~'; ++character) {
        ascii += character;
    }
    EXPECT_FALSE(keymap.cover(ascii));
    const Reader reader(keymap);
    ASSERT_TRUE(reader.isValid());
    for (const char32_t character : ascii) {
        EXPECT_EQ(reader.characterOf(keymap.strokeOf(character)), character);
    }
}

// Xwayland 22.1 crashes without one when an X program asks for the indicators.
TEST(TextKeymap, HasAnIndicator) {
    const Reader reader{TextKeymap()};
    ASSERT_TRUE(reader.isValid());
    EXPECT_GT(xkb_keymap_num_leds(reader.keymap()), 0U);
}

TEST(TextKeymap, TypesSmallLettersAndBlanksWithoutModifiers) {
    const TextKeymap keymap;
    for (const char32_t character : std::u32string_view(U"the quick brown fox jumps")) {
        EXPECT_EQ(keymap.strokeOf(character).modifiers, 0U);
    }
}

TEST(TextKeymap, KeepsEarlierCharactersWhileThereIsRoom) {
    TextKeymap keymap;
    const std::u32string text = U"Zażółć gęślą jaźń – 日本語 😀 مرحبا é\u0302";
    EXPECT_TRUE(keymap.cover(text));
    EXPECT_FALSE(keymap.cover(U"a 語ć"));
    EXPECT_TRUE(keymap.cover(U"Съешь же ещё"));
    EXPECT_FALSE(keymap.cover(text));
    const Reader reader(keymap);
    ASSERT_TRUE(reader.isValid());
    for (const char32_t character : text + U"Съешь же ещё") {
        EXPECT_EQ(reader.characterOf(keymap.strokeOf(character)), character);
    }
}

TEST(TextKeymap, MakesRoomByWhatWasNotUsedForTheLongestTime) {
    TextKeymap keymap;
    std::u32string first;
    for (char32_t character = 0x4E00; first.size() < TextKeymap::capacity; ++character) {
        first += character;
    }
    EXPECT_EQ(TextKeymap::fittingLength(first), first.size());
    EXPECT_EQ(TextKeymap::fittingLength(first + U"一龠"), first.size() + 1);
    EXPECT_TRUE(keymap.cover(first));
    EXPECT_TRUE(keymap.cover(U"abc"));
    EXPECT_FALSE(keymap.cover(U"cab"));
    const Reader reader(keymap);
    ASSERT_TRUE(reader.isValid());
    EXPECT_EQ(reader.characterOf(keymap.strokeOf(U'b')), U'b');
}

TEST(TextKeymap, HasAKeyThatTypesNothing) {
    const TextKeymap keymap;
    const Reader reader(keymap);
    ASSERT_TRUE(reader.isValid());
    EXPECT_EQ(reader.symbolOf(TextKeymap::neutralStroke()), xkb_keysym_t{XKB_KEY_VoidSymbol});
    EXPECT_EQ(xkb_keymap_mod_get_index(reader.keymap(), XKB_MOD_NAME_ALT), 3U);
    EXPECT_EQ(TextKeymap::altModifier, 1U << 3);
}

// An X program may look the key up in the map of the keyboard that came before.
TEST(TextKeymap, HasAKeyThatTypesNothingByTheMapOfTheUsersKeyboard) {
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(
        xkb_context_new(XKB_CONTEXT_NO_FLAGS), &xkb_context_unref);
    for (const char* layout : {"us", "de", "fr", "jp", "br"}) {
        const xkb_rule_names names{"evdev", "pc105", layout, nullptr, nullptr};
        const std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
            xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS),
            &xkb_keymap_unref);
        ASSERT_TRUE(keymap) << layout;
        const xkb_keysym_t* symbols = nullptr;
        EXPECT_EQ(xkb_keymap_key_get_syms_by_level(
                      keymap.get(), TextKeymap::neutralStroke().key + 8, 0, 0, &symbols),
                  0)
            << layout;
    }
}

}  // namespace

}  // namespace tarvik::tests
