// SPDX-License-Identifier: MIT

#include "fuzz/BusValues.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Utf8.h"

namespace tarvik::fuzz {

namespace {

constexpr int maxElements = 4;

// What the readers look for, and other words.
constexpr const char* words[] = {"",
                                 "focused",
                                 "add",
                                 "Qt",
                                 "gtk",
                                 "IsEnabled",
                                 "org.a11y.Status",
                                 "org.a11y.atspi.EditableText",
                                 "desktop-startup-id",
                                 "activation-token",
                                 "toggle",
                                 "setup",
                                 ":1.7",
                                 ":1.8"};
constexpr const char* paths[] = {"/", "/org/a11y/atspi/accessible/root", "/widget/1", "/widget/2",
                                 "/org/a11y/atspi/null"};
constexpr const char* everyType[] = {"s",  "i",     "u",  "b",      "v", "(so)", "a(so)", "as",
                                     "au", "a{sv}", "av", "(siiv)", "o", "x",    "d",     "y"};

std::string textFrom(FuzzedDataProvider& input) {
    if (input.ConsumeBool()) {
        return input.PickValueInArray(words);
    }
    std::string text = input.ConsumeRandomLengthString(200);
    return isUtf8(text) && text.find('\0') == std::string::npos ? text : "?";
}

// The length of the first whole type of a signature.
std::size_t lengthOfType(std::string_view types) {
    if (types.starts_with('a')) {
        return 1 + lengthOfType(types.substr(1));
    }
    int depth = 0;
    std::size_t length = 0;
    do {
        const char c = types[length++];
        depth += (c == '(' || c == '{') - (c == ')' || c == '}');
    } while (depth > 0);
    return length;
}

void appendContainer(FuzzedDataProvider& input, sd_bus_message* message, char kind,
                     const std::string& contents, int count) {
    if (sd_bus_message_open_container(message, kind, contents.c_str()) < 0) {
        return;
    }
    for (int element = 0; element < count; ++element) {
        std::string_view rest = contents;
        while (!rest.empty()) {
            const std::size_t length = lengthOfType(rest);
            appendValue(input, message, std::string(rest.substr(0, length)).c_str());
            rest.remove_prefix(length);
        }
    }
    sd_bus_message_close_container(message);
}

void appendNumber(FuzzedDataProvider& input, sd_bus_message* message, char type) {
    const auto number = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::int64_t>(-3, 40)
                                            : input.ConsumeIntegral<std::int64_t>();
    const std::uint64_t bits =
        type == 'b' ? static_cast<std::uint64_t>(number & 1) : static_cast<std::uint64_t>(number);
    sd_bus_message_append_basic(message, type, &bits);
}

}  // namespace

void appendValue(FuzzedDataProvider& input, sd_bus_message* message, const char* type) {
    const std::string contents(type + 1);
    switch (type[0]) {
        case 's':
            sd_bus_message_append(message, "s", textFrom(input).c_str());
            break;
        case 'o':
            sd_bus_message_append(message, "o", input.PickValueInArray(paths));
            break;
        case 'v':
            appendContainer(input, message, 'v', input.PickValueInArray(everyType), 1);
            break;
        case 'a':
            appendContainer(input, message, 'a', contents,
                            input.ConsumeIntegralInRange(0, maxElements));
            break;
        case '(':
            appendContainer(input, message, 'r', contents.substr(0, contents.size() - 1), 1);
            break;
        case '{':
            appendContainer(input, message, 'e', contents.substr(0, contents.size() - 1), 1);
            break;
        default:
            appendNumber(input, message, type[0]);
    }
}

void appendValues(FuzzedDataProvider& input, sd_bus_message* message, int maxCount) {
    for (int count = input.ConsumeIntegralInRange(0, maxCount); count > 0; --count) {
        appendValue(input, message, input.PickValueInArray(everyType));
    }
}

}  // namespace tarvik::fuzz
