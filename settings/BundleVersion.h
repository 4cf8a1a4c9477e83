// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Bundle.h"

namespace tarvik {

/// The application's version; "?" when the bundle has none.
inline std::string versionText(const platform::Bundle& bundle) {
    return bundle.objectForInfoDictionaryKey("CFBundleShortVersionString").value_or("?");
}

}  // namespace tarvik
