// SPDX-License-Identifier: MIT

#include "speech-service/Handshake.h"

#include <algorithm>
#include <boost/beast/websocket/rfc6455.hpp>
#include <optional>

#include "base/Text.h"
#include "speech-service/Json.h"

namespace tarvik::service {

namespace http = boost::beast::http;

namespace {

std::string_view viewOf(boost::beast::string_view text) {
    return {text.data(), text.size()};
}

struct Credentials {
    std::string key;
    std::string subprotocol;
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return lower;
}

bool isKeyWord(std::string_view word) {
    return word == "token" || word == "bearer";
}

// The key is everything after the first comma, further commas included.
std::optional<Credentials> credentialsOf(const Request& request) {
    const std::string_view authorization = viewOf(request[http::field::authorization]);
    const std::size_t space = authorization.find(' ');
    // Unlike subprotocols, the words of this field may be in capitals.
    if (space != std::string_view::npos && isKeyWord(lowerCase(authorization.substr(0, space)))) {
        return Credentials{trimmed(authorization.substr(space + 1)), {}};
    }
    const std::string_view subprotocols = viewOf(request[http::field::sec_websocket_protocol]);
    const std::size_t comma = subprotocols.find(',');
    const std::string word = trimmed(subprotocols.substr(0, comma));
    if (comma == std::string_view::npos || !isKeyWord(word)) {
        return std::nullopt;
    }
    return Credentials{trimmed(subprotocols.substr(comma + 1)), word};
}

Result<std::string> checkKey(const Request& request, const ServerOptions& options) {
    const std::optional<Credentials> credentials = credentialsOf(request);
    if (!credentials || credentials->key.empty()) {
        return Error{401, "The key is missing; it follows \"token\" in Sec-WebSocket-Protocol"};
    }
    if (!options.keys.empty() && !options.keys.contains(credentials->key)) {
        return Error{401, "The key is not known here"};
    }
    return credentials->subprotocol;
}

std::string_view errorCode(http::status status) {
    switch (status) {
        case http::status::unauthorized:
            return "INVALID_AUTH";
        case http::status::forbidden:
            return "FORBIDDEN";
        case http::status::not_found:
            return "NOT_FOUND";
        case http::status::upgrade_required:
            return "UPGRADE_REQUIRED";
        case http::status::too_many_requests:
            return "TOO_MANY_REQUESTS";
        case http::status::payment_required:
            return "ASR_PAYMENT_REQUIRED";
        default:
            return http::to_status_class(status) == http::status_class::server_error
                       ? "INTERNAL_SERVER_ERROR"
                       : "INVALID_QUERY_PARAMETER";
    }
}

std::string oneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, ' ');
    return text;
}

Response answer(unsigned version, std::string_view code, const Error& error,
                const std::string& requestId) {
    Response response(http::int_to_status(static_cast<unsigned>(error.code)), version);
    response.set(http::field::content_type, "application/json");
    response.set(requestIdField, requestId);
    // The body has the text as it is; a field must be one line.
    response.set(errorField, oneLine(error.localizedDescription));
    response.keep_alive(false);
    response.body() = "{\"err_code\":" + jsonString(code) +
                      ",\"err_msg\":" + jsonString(error.localizedDescription) +
                      ",\"request_id\":" + jsonString(requestId) + "}";
    response.prepare_payload();
    return response;
}

}  // namespace

Result<Handshake> checkHandshake(const Request& request, const ServerOptions& options) {
    // Only browsers send the field, and any page that they show could open streams here.
    if (request.count(http::field::origin) > 0) {
        return Error{403, "Streams are not for web pages"};
    }
    const std::string_view target = viewOf(request.target());
    const std::size_t question = target.find('?');
    if (target.substr(0, question) != listenPath) {
        return Error{404, "There is nothing here; streams are opened on /v1/listen"};
    }
    if (!boost::beast::websocket::is_upgrade(request)) {
        return Error{426, "Streams are opened by a web-socket upgrade"};
    }
    if (options.refusal) {
        return Error{*options.refusal, "This service was started to refuse every stream"};
    }
    const Result<std::string> subprotocol = checkKey(request, options);
    if (!subprotocol) {
        return subprotocol.error();
    }
    const Result<StreamQuery> query = parseStreamQuery(
        question == std::string_view::npos ? std::string_view() : target.substr(question + 1));
    if (!query) {
        return query.error();
    }
    return Handshake{query.value(), subprotocol.value()};
}

Response refusal(const Request& request, const Error& error, const std::string& requestId) {
    const http::status status = http::int_to_status(static_cast<unsigned>(error.code));
    Response response = answer(request.version(), errorCode(status), error, requestId);
    if (status == http::status::upgrade_required) {
        response.set(http::field::upgrade, "websocket");
    }
    return response;
}

Response refusalOfUnreadableRequest(const Error& error, const std::string& requestId) {
    return answer(11, "BAD_REQUEST", error, requestId);
}

}  // namespace tarvik::service
