// SPDX-License-Identifier: MIT

#include "speech-service/Handshake.h"

#include <boost/beast/websocket/rfc6455.hpp>

#include "base/Text.h"
#include "speech-service/Json.h"

namespace tarvik::service {

namespace http = boost::beast::http;

namespace {

std::string_view viewOf(boost::beast::string_view text) {
    return {text.data(), text.size()};
}

// The key is everything after the first comma, further commas included.
bool offersKey(std::string_view subprotocols) {
    const std::size_t comma = subprotocols.find(',');
    return comma != std::string_view::npos &&
           trimmed(subprotocols.substr(0, comma)) == tokenSubprotocol &&
           !trimmed(subprotocols.substr(comma + 1)).empty();
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
        default:
            return "INVALID_QUERY_PARAMETER";
    }
}

Response answer(unsigned version, std::string_view code, const Error& error,
                const std::string& requestId) {
    Response response(http::int_to_status(static_cast<unsigned>(error.code)), version);
    response.set(http::field::content_type, "application/json");
    response.keep_alive(false);
    response.body() = "{\"err_code\":" + jsonString(code) +
                      ",\"err_msg\":" + jsonString(error.localizedDescription) +
                      ",\"request_id\":" + jsonString(requestId) + "}";
    response.prepare_payload();
    return response;
}

}  // namespace

Result<StreamQuery> checkHandshake(const Request& request) {
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
    if (!offersKey(viewOf(request[http::field::sec_websocket_protocol]))) {
        return Error{401, "The key is missing; it follows \"token\" in Sec-WebSocket-Protocol"};
    }
    return parseStreamQuery(question == std::string_view::npos ? std::string_view()
                                                               : target.substr(question + 1));
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
