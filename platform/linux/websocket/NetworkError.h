// SPDX-License-Identifier: MIT
#pragma once

#include <boost/system/error_code.hpp>
#include <string>

#include "base/Error.h"

namespace tarvik::linuxdesktop {

/// An error with the text "`what`: reason". Its code is the errno value of `error`, or 0 when
/// `error` has none.
inline Error networkError(const std::string& what, const boost::system::error_code& error) {
    const bool hasNumber = error.category() == boost::system::system_category();
    return {hasNumber ? error.value() : 0, what + ": " + error.message()};
}

}  // namespace tarvik::linuxdesktop
