// SPDX-License-Identifier: MIT

#include "speech-service/ControlMessage.h"

#include <simdjson.h>

namespace tarvik::service {

std::optional<ControlMessage> parseControlMessage(std::string_view text) {
    simdjson::dom::parser parser;
    std::string_view type;
    if (parser.parse(simdjson::padded_string(text))["type"].get(type) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    if (type == "CloseStream") {
        return ControlMessage::closeStream;
    }
    if (type == "Finalize") {
        return ControlMessage::finalize;
    }
    if (type == "KeepAlive") {
        return ControlMessage::keepAlive;
    }
    return std::nullopt;
}

}  // namespace tarvik::service
