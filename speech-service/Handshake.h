// SPDX-License-Identifier: MIT
#pragma once

#include <boost/beast/http.hpp>
#include <string>

#include "base/Result.h"
#include "speech-service/ServerOptions.h"
#include "speech-service/StreamQuery.h"

namespace tarvik::service {

using Request = boost::beast::http::request<boost::beast::http::empty_body>;
using Response = boost::beast::http::response<boost::beast::http::string_body>;

/// The only path for streams.
inline constexpr std::string_view listenPath = "/v1/listen";

/// The fields of every response: the id of the request, and the error's text in a refusal.
inline constexpr const char* requestIdField = "dg-request-id";
inline constexpr const char* errorField = "dg-error";

/// What a request for a stream has agreed on.
struct Handshake {
    StreamQuery query;
    /// The subprotocol that the response selects: the word before the key. Empty if the key came in
    /// the field Authorization.
    std::string subprotocol;
};

/// Checks whether `request` may open a stream. The key follows "token" or "bearer", either in
/// Sec-WebSocket-Protocol after a comma or in Authorization after a space. The error's code is an
/// HTTP status: 403 for a request of a web page, 404 for another path, 426 without an upgrade, 401
/// without a key or with an unknown one, 400 for a bad query, or the refusal of `options`.
Result<Handshake> checkHandshake(const Request& request, const ServerOptions& options);

/// The response that refuses `request` with `error`, whose code is the HTTP status. The JSON body
/// has err_code, err_msg and request_id. The response ends the connection.
Response refusal(const Request& request, const Error& error, const std::string& requestId);

/// The same response for a request that cannot be parsed. The code of `error` is 400.
Response refusalOfUnreadableRequest(const Error& error, const std::string& requestId);

}  // namespace tarvik::service
