// SPDX-License-Identifier: MIT
// Messages of the speech service: what they deliver is never empty, is UTF-8, and does not depend
// on how the same JSON is written.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Promise.h"
#include "fuzz/Utf8.h"
#include "platform/WebSocket.h"
#include "speech/TranscriptMessage.h"

namespace {

using namespace tarvik;
using fuzz::promise;

std::string escaped(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string json;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || c == '"' || c == '\\') {
            json += "\\u00";
            json += digits[byte >> 4];
            json += digits[byte & 0xF];
        } else {
            json += c;
        }
    }
    return json;
}

std::string messageWith(const TranscriptMessage& message) {
    return R"({"type":"Results","is_final":)" + std::string(message.isFinal ? "true" : "false") +
           R"(,"channel":{"alternatives":[{"confidence":1.0,"transcript":")" +
           escaped(message.text) + R"("},{"transcript":"second"}]}})";
}

void expect(const std::string& json, const TranscriptMessage& expected) {
    const auto message = parseTranscriptMessage(json);
    promise(message.has_value(), "a written transcript is read");
    promise(message->text == expected.text, "a transcript keeps its text");
    promise(message->isFinal == expected.isFinal, "a transcript keeps its final flag");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string json(reinterpret_cast<const char*>(data), size);
    // The input as a text: whatever the service recognises arrives as it is.
    if (size > 0 && fuzz::isUtf8(json) && 6 * size < platform::maxReceivedMessageSize / 2) {
        expect(messageWith({json, false}), {json, false});
        expect(messageWith({json, true}), {json, true});
    }
    // The input as a message.
    const auto message = parseTranscriptMessage(json);
    if (message) {
        promise(!message->text.empty(), "an empty transcript is not delivered");
        promise(fuzz::isUtf8(message->text), "a transcript is UTF-8");
        promise(size <= platform::maxReceivedMessageSize, "a message beyond the limit is dropped");
        expect(" \t\r\n" + json + "\n ", *message);
        if (message->text.size() * 6 < platform::maxReceivedMessageSize / 2) {
            expect(messageWith(*message), *message);
        }
    }
    return 0;
}
