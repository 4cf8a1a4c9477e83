// SPDX-License-Identifier: MIT

#include "platform/linux/settings/IniEncoding.h"

#include <QString>
#include <array>
#include <cctype>

#include "base/Text.h"

namespace tarvik::linuxdesktop {

namespace {

struct Escape {
    char letter;
    char character;
};
constexpr std::array escapes = {Escape{'a', '\a'}, Escape{'b', '\b'}, Escape{'f', '\f'},
                                Escape{'n', '\n'}, Escape{'r', '\r'}, Escape{'t', '\t'},
                                Escape{'v', '\v'}, Escape{'"', '"'},  Escape{'\\', '\\'}};

bool isHexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

// A byte of a character in UTF-8 after the first one.
bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string hexadecimal(unsigned number) {
    return QString::number(number, 16).toStdString();
}

// Unquoted, such a text would read as a number or a truth value.
bool looksLikeAnotherType(std::string_view text) {
    return text == "true" || text == "false" ||
           text.find_first_not_of("+-0123456789") == std::string_view::npos;
}

bool needsQuotes(std::string_view text) {
    return text.empty() || isBlank(text.front()) || isBlank(text.back()) ||
           text.find_first_of(";,=") != std::string_view::npos || looksLikeAnotherType(text);
}

class ValueReader {
  public:
    explicit ValueReader(std::string_view value) : rest_(value) {}

    std::optional<std::string> read() {
        skipBlanks();
        while (!rest_.empty()) {
            const char c = take();
            if (c == '"') {
                isQuoted_ = !isQuoted_;
                settled_ = text_.size();
            } else if (c == ',' && !isQuoted_) {
                return std::nullopt;
            } else if (c == '\\') {
                readEscape();
                settled_ = text_.size();
            } else {
                text_ += c;
            }
        }
        dropTrailingBlanks();
        return text_;
    }

  private:
    char take() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    void skipBlanks() {
        while (!rest_.empty() && isBlank(rest_.front())) {
            rest_.remove_prefix(1);
        }
    }

    // Blanks at the end belong to the text only where they are quoted or escaped.
    void dropTrailingBlanks() {
        while (text_.size() > settled_ && isBlank(text_.back())) {
            text_.pop_back();
        }
    }

    void readEscape() {
        if (rest_.empty()) {
            return;
        }
        if (rest_.front() == 'x' || (rest_.front() >= '0' && rest_.front() <= '7')) {
            readCodeUnits();
            return;
        }
        const char letter = take();
        while (!rest_.empty() && isContinuation(rest_.front())) {
            take();
        }
        for (const Escape& escape : escapes) {
            if (escape.letter == letter) {
                text_ += escape.character;
            }
        }
        if (letter == '\n' && !isQuoted_) {
            skipBlanks();
        }
    }

    // Escaped code units are UTF-16: two in a row can be one character.
    void readCodeUnits() {
        QString units;
        units += readCodeUnit();
        while (units.back().isHighSurrogate() && rest_.starts_with("\\x")) {
            take();
            units += readCodeUnit();
        }
        text_ += units.toStdString();
    }

    QChar readCodeUnit() {
        const bool isHexadecimal = rest_.front() == 'x';
        if (isHexadecimal) {
            take();
        }
        unsigned unit = 0;
        while (!rest_.empty() && (isHexadecimal ? isHexDigit(rest_.front())
                                                : rest_.front() >= '0' && rest_.front() <= '7')) {
            const char digit = take();
            const auto value =
                static_cast<unsigned>(QString(QChar::fromLatin1(digit)).toUInt(nullptr, 16));
            unit = unit * (isHexadecimal ? 16 : 8) + value;
        }
        return QChar(static_cast<char16_t>(unit));
    }

    std::string_view rest_;
    std::string text_;
    std::size_t settled_ = 0;
    bool isQuoted_ = false;
};

}  // namespace

std::string encodeIniValue(std::string_view text) {
    std::string value;
    bool mustEscapeDigit = false;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const Escape* named = nullptr;
        for (const Escape& escape : escapes) {
            named = escape.character == c ? &escape : named;
        }
        if (named != nullptr) {
            value += {'\\', named->letter};
            mustEscapeDigit = false;
        } else if (byte < 0x20 || (mustEscapeDigit && isHexDigit(c))) {
            value += "\\x" + hexadecimal(byte);
            mustEscapeDigit = true;
        } else {
            value += c;
            mustEscapeDigit = false;
        }
    }
    if (text.starts_with('@')) {
        value.insert(0, 1, '@');
    }
    return needsQuotes(text) ? '"' + value + '"' : value;
}

std::optional<std::string> decodeIniValue(std::string_view value) {
    std::optional<std::string> text = ValueReader(value).read();
    if (text && text->find('\0') != std::string::npos) {
        return std::nullopt;
    }
    if (!text || !text->starts_with('@')) {
        return text;
    }
    if (text->starts_with("@@")) {
        return text->substr(1);
    }
    if (text->starts_with("@String(") && text->ends_with(')')) {
        return text->substr(8, text->size() - 9);
    }
    return text->ends_with(')') ? std::nullopt : text;
}

std::string encodeIniKey(std::string_view text) {
    std::string key;
    // Qt's own conversion drops a byte order mark.
    for (const char16_t code : utf16FromUtf8(text)) {
        const bool isPlain = code < 0x80 && (std::isalnum(static_cast<int>(code)) != 0 ||
                                             code == '_' || code == '-' || code == '.');
        if (isPlain) {
            key += static_cast<char>(code);
        } else if (code == '/') {
            key += '\\';
        } else {
            const QString digits = QString::number(code, 16).toUpper();
            key += code <= 0xff ? "%" + digits.rightJustified(2, u'0').toStdString()
                                : "%U" + digits.rightJustified(4, u'0').toStdString();
        }
    }
    return key;
}

std::string decodeIniKey(std::string_view key) {
    QString text;
    const QString written = QString::fromStdU16String(utf16FromUtf8(key));
    for (qsizetype i = 0; i < written.size(); ++i) {
        const bool isWide = written.mid(i, 2) == QLatin1String("%U");
        const qsizetype digits = isWide ? 4 : 2;
        bool isNumber = false;
        const uint code = written.mid(i + digits / 2, digits).toUInt(&isNumber, 16);
        if (written[i] == u'%' && isNumber) {
            text += QChar(static_cast<char16_t>(code));
            i += digits + digits / 2 - 1;
        } else {
            text += written[i] == u'\\' ? QChar(u'/') : written[i];
        }
    }
    return text.toStdString();
}

}  // namespace tarvik::linuxdesktop
