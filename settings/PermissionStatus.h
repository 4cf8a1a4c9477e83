#pragma once

namespace tarvik {

/// Where a permission stands, as the setup window shows it.
enum class PermissionStatus {
    granted,
    /// Refused or restricted.
    denied,
    /// Never asked for, or in a state that only the system knows.
    notDetermined
};

}  // namespace tarvik
