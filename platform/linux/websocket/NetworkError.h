#pragma once

#include <boost/system/error_code.hpp>
#include <string>

#include "base/Error.h"

namespace tarvik::linuxdesktop {

/// "`what`: reason", with the errno value where the failure has one.
inline Error networkError(const std::string& what, const boost::system::error_code& failure) {
    const bool hasNumber = failure.category() == boost::system::system_category();
    return {hasNumber ? failure.value() : 0, what + ": " + failure.message()};
}

}  // namespace tarvik::linuxdesktop
