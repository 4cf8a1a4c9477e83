// SPDX-License-Identifier: MIT

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/linux/x11/InputFixture.h"

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;
using Kind = X11Target::Kind;

/// A line of what people dictate.
struct Line {
    const char* name;
    std::u32string_view text;
};

constexpr std::array corpus{
    Line{"Ascii",
         U"He said: \"Really?\" (a #1 & 50% @home_now) ~/x|y\\z <b> [1] {2} 3*4=12; $5^2`!'. "},
    Line{"Polish", U"Zażółć gęślą jaźń, a Łódź i Świętokrzyskie też; „pchnąć w tę łódź jeża”. "},
    Line{"German", U"Fünf Boxkämpfer jagen Viktor quer über den großen Sylter Deich – für 3 €. "},
    Line{"Vietnamese",
         U"Tie\u0302\u0301ng Vie\u0323\u0302t co\u0301 da\u0302\u0301u: quye\u0302\u0309n "
         U"sa\u0301ch, u\u031Bo\u031B\u0301c mo\u031B. "},
    Line{"Russian", U"Съешь же ещё этих мягких французских булок, да выпей чаю. Подъём! "},
    Line{"Greek", U"Ξεσκεπάζω την ψυχοφθόρα βδελυγμία. Καλημέρα, Ελλάδα! Τι κάνεις; "},
    Line{"Arabic", U"صِف خَلقَ خَودِ كَمِثلِ الشَمسِ إِذ بَزَغَت، يَحظى الضَجيعُ؟ "},
    Line{"Hebrew", U"דג סקרן שט בים מאוכזב ולפתע מצא לו חברה. שָׁלוֹם עוֹלָם! "},
    Line{"Japanese",
         U"いろはにほへと「ちりぬるを」、我が世誰ぞ常ならむ。カタカナとコーヒー、東京都渋谷区。"},
    Line{"Korean",
         U"키스의 고유조건은 입술끼리 만나야 하고, 다람쥐 헌 쳇바퀴에 타고파. ㄱㄴㄷㅏㅣ "},
    Line{"Emoji",
         U"👍🏽 👩‍👩‍👧‍👦 🏳️‍🌈 🇩🇪 🧑🏿‍🚀 ❤️ "
         U"👨🏻‍💻 "
         U"☎ "
         U"▶ "
         U"▲ "
         U"≡ "
         U"⇔ "
         U"─ "
         U"⟨⟩ "},
};

std::u32string repeated(std::u32string_view text, std::size_t length) {
    std::u32string all;
    while (all.size() < length) {
        all += text;
    }
    all.resize(length);
    return all;
}

struct Range {
    char32_t first;
    char32_t last;
};

bool isIn(const std::vector<Range>& ranges, char32_t character) {
    return std::ranges::any_of(ranges, [&](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

// Assigned, as far as the C library knows, and neither a control nor private.
bool isTypable(char32_t character) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const std::vector<Range> others{{0xD800, 0xF8FF}, {0x2028, 0x2029}};
    return iswprint_l(static_cast<wint_t>(character), unicode) != 0 && !isIn(others, character);
}

// What a toolkit makes of a character by itself, also when a user's own key yields the character.
bool isLostOn(Kind kind, char32_t character) {
    // The compose tables split these ligatures into their letters.
    const std::vector<Range> split{
        {0xFEF5, 0xFEF5}, {0xFEF7, 0xFEF7}, {0xFEF9, 0xFEF9}, {0xFEFB, 0xFEFB}};
    // GTK 3 looks at the lower half of the symbols only. There it sees dead keys, the compose key,
    // and an accent that waits for a Greek letter.
    const std::vector<Range> dead{{0x07AE, 0x07AE}, {0xFE50, 0xFE93}, {0xFF20, 0xFF20}};
    // Qt decodes the text of each key like that of a file, and drops a byte order mark.
    const std::vector<Range> mark{{0xFEFF, 0xFEFF}};
    // Qt 5 takes no character that is younger than Unicode 13.
    const std::vector<Range> young{
        {0x061D, 0x061D}, {0x0870, 0x088E},   {0x0890, 0x0891}, {0x0898, 0x089F},
        {0x08B5, 0x08B5}, {0x08C8, 0x08D2},   {0x0C3C, 0x0C3C}, {0x0C5D, 0x0C5D},
        {0x0CDD, 0x0CDD}, {0x170D, 0x170D},   {0x1715, 0x1715}, {0x171F, 0x171F},
        {0x180F, 0x180F}, {0x1AC1, 0x1ACE},   {0x1B4C, 0x1B4C}, {0x1B7D, 0x1B7E},
        {0x1DFA, 0x1DFA}, {0x20C0, 0x20C0},   {0x2C2F, 0x2C2F}, {0x2C5F, 0x2C5F},
        {0x2E53, 0x2E5D}, {0x9FFD, 0x9FFF},   {0xA7C0, 0xA7C1}, {0xA7D0, 0xA7D9},
        {0xA7F2, 0xA7F4}, {0xFBC2, 0xFBC2},   {0xFD40, 0xFD4F}, {0xFDCF, 0xFDCF},
        {0xFDFE, 0xFDFF}, {0x10000, 0x10FFFF}};
    switch (kind) {
        case Kind::gtk4Text:
            return false;
        case Kind::qt5Text:
            return isIn(split, character) || isIn(mark, character) || isIn(young, character);
        case Kind::qt6Text:
            return isIn(split, character) || isIn(mark, character);
        case Kind::gtk3Text:
            return isIn(split, character) || isIn(dead, character);
        default:
            return isIn(split, character);
    }
}

class X11Characters : public InputFixture, public testing::TestWithParam<Kind> {
  protected:
    static std::u32string charactersOf(char32_t first, char32_t end, char32_t step = 1) {
        std::u32string characters;
        for (char32_t character = first; character < end; character += step) {
            if (isTypable(character) && !isLostOn(GetParam(), character)) {
                characters += character;
            }
        }
        return characters;
    }
    void arrives(std::u32string_view characters) {
        // A program's widget gets slower with the length of its text.
        constexpr std::size_t maxLength = 1000;
        for (std::size_t first = 0; first < characters.size(); first += maxLength) {
            const X11Target target(GetParam(), mainQueue);
            ASSERT_TRUE(comesToFront(target));
            const std::string text = utf8Of(characters.substr(first, maxLength));
            type(text, target.process());
            EXPECT_TRUE(becomesInTime(target, text)) << differenceOf(target.text(), text);
        }
    }
    // As long as the text still grows, a slow machine is no failure.
    bool becomesInTime(const X11Target& target, std::string_view text) {
        for (std::size_t size = 0;; size = target.text().size()) {
            if (mainQueue.runUntil([&] { return target.text() == text; }, 20s)) {
                return true;
            }
            if (target.text().size() <= size) {
                return false;
            }
        }
    }
    static std::string utf8Of(std::u32string_view characters) {
        std::string bytes;
        for (const char32_t character : characters) {
            append(bytes, character);
        }
        return bytes;
    }

  private:
    // The first characters that differ, in hexadecimal digits of their bytes.
    static std::string differenceOf(std::string_view is, std::string_view expected) {
        constexpr std::size_t length = 24;
        const auto [left, right] = std::ranges::mismatch(is, expected);
        const auto first = static_cast<std::size_t>(right - expected.begin());
        std::string report = std::to_string(is.size()) + " bytes of " +
                             std::to_string(expected.size()) + "; at byte " + std::to_string(first);
        for (const std::string_view text : {is, expected}) {
            report += " | ";
            for (const char byte : text.substr(std::min(first, text.size()), length)) {
                std::array<char, 4> digits{};
                std::snprintf(digits.data(), digits.size(), "%02x ",
                              static_cast<unsigned>(static_cast<unsigned char>(byte)));
                report += digits.data();
            }
        }
        return report;
    }
    static void append(std::string& bytes, char32_t character) {
        const auto add = [&](char32_t byte) { bytes += static_cast<char>(byte); };
        if (character < 0x80) {
            add(character);
            return;
        }
        const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        add((0xF0U << (3 - following) & 0xF0) | character >> 6 * following);
        for (int i = following - 1; i >= 0; --i) {
            add(0x80 | (character >> 6 * i & 0x3F));
        }
    }
};

TEST_P(X11Characters, OfEveryScriptArrive) {
    std::u32string text = U"「」ㄱㄴㅎㅏㅣ▶▲☎≡⇔─⟨⟩";
    for (const Line& line : corpus) {
        text += line.text;
    }
    arrives(repeated(text, 2000));
}

TEST_P(X11Characters, FromAllOverUnicodeArrive) {
    arrives(charactersOf(0x20, 0x10000, 53) + charactersOf(0x10000, 0x30000, 997));
}

// Tests that take minutes.
using X11CharactersSoak = X11Characters;

TEST_P(X11CharactersSoak, OfTheBasicPlaneArriveOneAndAll) {
    arrives(charactersOf(0x20, 0x10000) + charactersOf(0x1F000, 0x1FB00));
}

TEST_P(X11CharactersSoak, OfEachScriptArriveTwoThousandAtATime) {
    for (const Line& line : corpus) {
        const X11Target target(GetParam(), mainQueue);
        ASSERT_TRUE(comesToFront(target));
        const std::string text = utf8Of(repeated(line.text, 2000));
        const auto start = std::chrono::steady_clock::now();
        type(text, target.process());
        EXPECT_TRUE(becomesInTime(target, text)) << line.name;
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - start;
        std::printf("%s: %.0f ms\n", line.name, time.count());
    }
}

const auto textKinds = testing::Values(Kind::gtk3Text, Kind::gtk4Text, Kind::qt5Text, Kind::qt6Text,
                                       Kind::tkText, Kind::terminal);

std::string nameOfKind(const testing::TestParamInfo<Kind>& info) {
    return nameOf(info.param);
}

INSTANTIATE_TEST_SUITE_P(, X11Characters, textKinds, nameOfKind);
INSTANTIATE_TEST_SUITE_P(, X11CharactersSoak, textKinds, nameOfKind);

}  // namespace

}  // namespace tarvik::tests
