// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "base/Error.h"

namespace tarvik::platform {

/// Whether the application starts at login. The values are ServiceManagement's.
enum class LoginItemStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

/// The registration of the application itself as a login item. Main thread only.
class LoginItemService {
  public:
    virtual ~LoginItemService() = default;

    virtual LoginItemStatus status() = 0;
    /// Makes the application start at login. The error says in one line why that failed.
    virtual std::optional<Error> registerItem() = 0;
    /// Ends the start at login. The error says in one line why that failed.
    virtual std::optional<Error> unregisterItem() = 0;
};

}  // namespace tarvik::platform
