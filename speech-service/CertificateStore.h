// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

#include "base/Result.h"
#include "speech-service/CertificateFiles.h"

namespace tarvik::service {

/// Makes sure that `directory` has an authority (ca.pem, ca-key.pem) and a server certificate
/// signed by it (server.pem, server-key.pem).
///
/// Valid files are used again. Missing, damaged or soon expiring certificates are replaced, with a
/// log line unless they were missing. An unusable authority is renamed to *.unusable. Keys are
/// readable by their owner only. Several processes may call this for one directory at once.
Result<CertificateFiles> prepareCertificates(const std::filesystem::path& directory);

}  // namespace tarvik::service
