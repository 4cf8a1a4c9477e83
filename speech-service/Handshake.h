// SPDX-License-Identifier: MIT
#pragma once

#include <boost/beast/http.hpp>
#include <string>

#include "base/Result.h"
#include "speech-service/StreamQuery.h"

namespace tarvik::service {

using Request = boost::beast::http::request<boost::beast::http::empty_body>;
using Response = boost::beast::http::response<boost::beast::http::string_body>;

/// The only path for streams.
inline constexpr std::string_view listenPath = "/v1/listen";

/// The subprotocol that the client sends before the key and that the response selects.
inline constexpr std::string_view tokenSubprotocol = "token";

/// The query of `request` if the request may open a stream. The error's code is an HTTP status: 403
/// for a request of a web page, 404 for another path, 426 without an upgrade, 401 without a key,
/// 400 for a bad query.
Result<StreamQuery> checkHandshake(const Request& request);

/// The response that refuses `request` with `error`, whose code is the HTTP status. The JSON body
/// has err_code, err_msg and request_id. The response ends the connection.
Response refusal(const Request& request, const Error& error, const std::string& requestId);

/// The same response for a request that cannot be parsed. The code of `error` is 400.
Response refusalOfUnreadableRequest(const Error& error, const std::string& requestId);

}  // namespace tarvik::service
