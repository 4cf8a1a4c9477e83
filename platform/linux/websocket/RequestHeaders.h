#pragma once

#include <boost/beast/websocket/rfc6455.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Error.h"

namespace tarvik::linuxdesktop {

using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// Why `fields` cannot stand in a request; nothing when they can.
std::optional<Error> objectionToHeaders(const HeaderFields& fields);

/// Adds `fields`, which can stand in a request, byte for byte, and the name of this program.
void addHeaders(boost::beast::websocket::request_type& request, const HeaderFields& fields);

}  // namespace tarvik::linuxdesktop
