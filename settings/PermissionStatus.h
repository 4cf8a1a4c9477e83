// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik {

/// The status of a permission for the setup window.
enum class PermissionStatus {
    granted,
    /// Refused or restricted.
    denied,
    /// Never requested, or a status that this application does not know.
    notDetermined
};

}  // namespace tarvik
