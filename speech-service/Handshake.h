#pragma once

#include <boost/beast/http.hpp>
#include <string>

#include "base/Result.h"
#include "speech-service/StreamQuery.h"

namespace tarvik::service {

using Request = boost::beast::http::request<boost::beast::http::empty_body>;
using Response = boost::beast::http::response<boost::beast::http::string_body>;

/// The one path that streams are opened on.
inline constexpr std::string_view listenPath = "/v1/listen";

/// The subprotocol that comes before the key and that the reply selects.
inline constexpr std::string_view tokenSubprotocol = "token";

/// Decides whether `request` may open a stream. The error's code is the HTTP status of the refusal:
/// 404 for another path, 426 for no web-socket upgrade, 401 without a key, 400 for a bad query.
Result<StreamQuery> checkHandshake(const Request& request);

/// The answer to a request that `error` (code: HTTP status) refuses: a JSON body with err_code,
/// err_msg and request_id. The connection ends with it.
Response refusal(const Request& request, const Error& error, const std::string& requestId);

/// The same answer to a request that cannot be read, for the reason that `error` (code: 400) gives.
Response refusalOfUnreadable(const Error& error, const std::string& requestId);

}  // namespace tarvik::service
