// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/RequestHeaders.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string_view>

namespace tarvik::linuxdesktop {

namespace {

constexpr std::string_view userAgentField = "User-Agent";
constexpr std::string_view userAgent = "TarvikDictate/" TARVIK_VERSION;

// Beast keeps the length of a value and its line break in 16 bits, and throws for more.
constexpr std::size_t maxBlockSize = 65'533;

bool isTokenCharacter(char character) {
    constexpr std::string_view punctuation = "!#$%&'*+-.^_`|~";
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           punctuation.find(character) != std::string_view::npos;
}

bool canStandInValue(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return (byte >= 0x20 && byte != 0x7F) || byte == '\t';
}

// Beast trims blanks at the end of a value, but those blanks may belong to a key. So all fields
// become the value of the first one: the line breaks inside it keep the blanks before them, and the
// last value, the user agent, ends in no blank.
std::string valueOfAll(const HeaderFields& fields) {
    std::string block = fields.front().second;
    for (auto field = std::next(fields.begin()); field != fields.end(); ++field) {
        block.append("\r\n").append(field->first).append(": ").append(field->second);
    }
    return block.append("\r\n").append(userAgentField).append(": ").append(userAgent);
}

}  // namespace

std::optional<Error> checkHeaders(const HeaderFields& fields) {
    for (const auto& [name, value] : fields) {
        if (name.empty() || !std::all_of(name.begin(), name.end(), isTokenCharacter)) {
            return Error{EINVAL, "The request has a header field whose name is none"};
        }
        if (!std::all_of(value.begin(), value.end(), canStandInValue)) {
            return Error{EINVAL, "The header field " + name +
                                     " has a line break or another control character"};
        }
    }
    if (!fields.empty() && valueOfAll(fields).size() > maxBlockSize) {
        return Error{EMSGSIZE, "The header field " + fields.front().first + " is too long"};
    }
    return std::nullopt;
}

void addHeaders(boost::beast::websocket::request_type& request, const HeaderFields& fields) {
    if (fields.empty()) {
        request.set(userAgentField, userAgent);
        return;
    }
    request.set(fields.front().first, valueOfAll(fields));
}

}  // namespace tarvik::linuxdesktop
