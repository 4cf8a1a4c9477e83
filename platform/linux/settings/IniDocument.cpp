// SPDX-License-Identifier: MIT

#include "platform/linux/settings/IniDocument.h"

#include <QString>
#include <QStringDecoder>
#include <algorithm>

#include "platform/linux/settings/IniEncoding.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

bool isUtf8(std::string_view content) {
    // Otherwise the decoder awaits the rest of a character that is cut at the end.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded =
        decoder(QByteArrayView(content.data(), static_cast<qsizetype>(content.size())));
    return !decoder.hasError() && content.find('\0') == std::string_view::npos;
}

// The text without the blanks and line breaks of ASCII at its ends. The other spaces of Unicode
// belong to a text.
std::string_view bare(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

// A line ends at a break that is not escaped, or before a comment at its end. A break inside quotes
// ends the line too: QSettings never writes such a break, and a forgotten quote must not swallow
// the entries that follow.
std::size_t lengthOfFirstLine(std::string_view content) {
    const bool isComment = content.starts_with(';') || content.starts_with('#');
    bool isQuoted = false;
    for (std::size_t i = 0; i < content.size(); ++i) {
        const char c = content[i];
        if (c == '\n') {
            return i + 1;
        }
        if (c == ';' && i > 0 && !isComment && !isQuoted) {
            return i;
        }
        if (c == '"' && !isComment) {
            isQuoted = !isQuoted;
        }
        if (c == '\\' && !isComment) {
            ++i;
        }
    }
    return content.size();
}

// Whether what follows `line` would be another line.
bool isEnded(std::string_view line) {
    return lengthOfFirstLine(std::string(line) + 'x') == line.size();
}

bool isGeneralGroup(std::string_view name) {
    return QLatin1String(name.data(), static_cast<qsizetype>(name.size()))
               .compare(QLatin1String("general"), Qt::CaseInsensitive) == 0;
}

}  // namespace

Result<IniDocument> IniDocument::parse(std::string_view content) {
    if (!isUtf8(content)) {
        return Error{0, "it is not text in UTF-8"};
    }
    if (content.starts_with(byteOrderMark)) {
        content.remove_prefix(byteOrderMark.size());
    }
    IniDocument document;
    bool isGeneral = true;
    auto number = 1;
    while (!content.empty()) {
        const std::size_t length = lengthOfFirstLine(content);
        const std::string_view line = content.substr(0, length);
        if (!document.addLine(line, isGeneral)) {
            return Error{0, "line " + std::to_string(number) + " makes no sense"};
        }
        number += static_cast<int>(std::count(line.begin(), line.end(), '\n'));
        content.remove_prefix(length);
    }
    return document;
}

// False for a line that is neither entry nor group nor comment nor blank.
bool IniDocument::addLine(std::string_view line, bool& isGeneral) {
    const std::string_view text = bare(line);
    Line added{std::string(line), isGeneral, {}, {}};
    if (text.starts_with('[') && text.ends_with(']')) {
        isGeneral = isGeneralGroup(bare(text.substr(1, text.size() - 2)));
        added.isGeneral = isGeneral;
    } else if (!text.empty() && text[0] != ';' && text[0] != '#') {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0) {
            return false;
        }
        if (isGeneral) {
            added.key = decodeIniKey(bare(text.substr(0, equals)));
            added.value = bare(text.substr(equals + 1));
        }
    }
    lines_.push_back(std::move(added));
    return true;
}

auto IniDocument::isEntry(std::string_view key) {
    return [key](const Line& line) { return !key.empty() && line.key == key; };
}

std::optional<std::string> IniDocument::value(std::string_view key) const {
    const auto found = std::find_if(lines_.rbegin(), lines_.rend(), isEntry(key));
    return found == lines_.rend() ? std::nullopt : std::optional(found->value);
}

void IniDocument::set(std::string_view key, const std::optional<std::string>& value) {
    const auto first = std::find_if(lines_.begin(), lines_.end(), isEntry(key));
    const bool isNew = first == lines_.end();
    auto place = first - lines_.begin();
    std::erase_if(lines_, isEntry(key));
    if (value) {
        place = isNew ? endOfGeneral() : place;
        lines_.insert(lines_.begin() + place, Line{encodeIniKey(key) + "=" + *value + "\n", true,
                                                   std::string(key), *value});
    }
}

// The place for a new entry is behind the last one, so that blank lines before the next group stay
// where they are.
std::ptrdiff_t IniDocument::endOfGeneral() {
    const auto last = std::find_if(lines_.rbegin(), lines_.rend(), [](const Line& line) {
        return line.isGeneral && !bare(line.text).empty();
    });
    if (last == lines_.rend()) {
        lines_.insert(lines_.begin(), Line{"[General]\n", true, {}, {}});
        return 1;
    }
    // The end of the file may escape the first break that follows.
    while (!isEnded(last->text)) {
        last->text += '\n';
    }
    return lines_.rend() - last;
}

std::string IniDocument::content() const {
    std::string content;
    for (const Line& line : lines_) {
        content += line.text;
    }
    // A reader takes the first one for the mark of the file, and this one belongs to a line.
    if (content.starts_with(byteOrderMark)) {
        content.insert(0, byteOrderMark);
    }
    return content;
}

}  // namespace tarvik::linuxdesktop
