#pragma once

#include <filesystem>

namespace tarvik::service {

/// Where the service's certificates are kept; all PEM.
struct CertificateFiles {
    /// The authority's certificate, for clients to trust.
    std::filesystem::path authority;
    std::filesystem::path authorityKey;
    std::filesystem::path server;
    std::filesystem::path serverKey;
};

}  // namespace tarvik::service
