// SPDX-License-Identifier: MIT
#pragma once

#include <boost/beast/websocket/rfc6455.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Error.h"

namespace tarvik::linuxdesktop {

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// The error when a name or a value in `fields` is not valid in an HTTP request, or when all
/// together are longer than some 65,000 bytes. Empty when the fields can be sent.
std::optional<Error> checkHeaders(const HeaderFields& fields);

/// Adds `fields` byte for byte, and a User-Agent field. checkHeaders() must have accepted `fields`.
void addHeaders(boost::beast::websocket::request_type& request, const HeaderFields& fields);

}  // namespace tarvik::linuxdesktop
