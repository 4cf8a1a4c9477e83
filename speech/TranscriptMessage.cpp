// SPDX-License-Identifier: MIT

#include "speech/TranscriptMessage.h"

#include <simdjson.h>

#include "platform/WebSocket.h"

namespace tarvik {

namespace {

constexpr std::size_t maxBytes = platform::maxReceivedMessageSize;
constexpr std::size_t maxDepth = 512;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::optional<simdjson::dom::object> firstAlternative(const simdjson::dom::object& message) {
    simdjson::dom::object channel;
    simdjson::dom::array alternatives;
    if (message["channel"].get(channel) != simdjson::SUCCESS ||
        channel["alternatives"].get(alternatives) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    std::optional<simdjson::dom::object> first;
    for (const simdjson::dom::element element : alternatives) {
        simdjson::dom::object alternative;
        // An element that is no object means that the array is not a list of alternatives.
        if (element.get(alternative) != simdjson::SUCCESS) {
            return std::nullopt;
        }
        if (!first) {
            first = alternative;
        }
    }
    return first;
}

}  // namespace

std::optional<TranscriptMessage> parseTranscriptMessage(std::string_view json) {
    // Newer versions of simdjson skip the mark.
    if (json.starts_with(byteOrderMark)) {
        return std::nullopt;
    }
    simdjson::dom::parser parser(maxBytes);
    simdjson::dom::object message;
    if (json.size() > maxBytes || parser.allocate(json.size(), maxDepth) != simdjson::SUCCESS ||
        parser.parse(simdjson::padded_string(json)).get(message) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    const std::optional<simdjson::dom::object> alternative = firstAlternative(message);
    std::string_view text;
    if (!alternative || (*alternative)["transcript"].get(text) != simdjson::SUCCESS ||
        text.empty()) {
        return std::nullopt;
    }
    bool isFinal = false;
    if (message["is_final"].get(isFinal) != simdjson::SUCCESS) {
        isFinal = false;
    }
    return TranscriptMessage{std::string(text), isFinal};
}

}  // namespace tarvik
