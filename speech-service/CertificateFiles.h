// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace tarvik::service {

/// The paths of the service's certificates and keys, all in PEM format.
struct CertificateFiles {
    /// The certificate of the authority, which clients have to trust.
    std::filesystem::path authority;
    std::filesystem::path authorityKey;
    std::filesystem::path server;
    std::filesystem::path serverKey;
};

}  // namespace tarvik::service
