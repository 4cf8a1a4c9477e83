#pragma once

#include <optional>

#include "base/Error.h"

namespace tarvik::platform {

/// Whether the application starts at login; the values are ServiceManagement's.
enum class LoginItemStatus { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

/// The registration of the application itself as a login item. Main thread only.
class LoginItemService {
  public:
    virtual ~LoginItemService() = default;

    virtual LoginItemStatus status() = 0;
    /// The error, if any, says in one line why it did not succeed.
    virtual std::optional<Error> registerItem() = 0;
    virtual std::optional<Error> unregisterItem() = 0;
};

}  // namespace tarvik::platform
