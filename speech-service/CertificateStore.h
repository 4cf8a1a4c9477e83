#pragma once

#include <filesystem>

#include "base/Result.h"
#include "speech-service/CertificateFiles.h"

namespace tarvik::service {

/// Makes sure that `directory` holds an authority (ca.pem, ca-key.pem) and a server certificate of
/// its (server.pem, server-key.pem).
///
/// What is there and valid is used again; what is missing, damaged or close to its end is made
/// anew, with a log line in the latter cases, and a damaged authority is kept beside. Keys are
/// readable by their owner only. Several processes may call it at once for one directory.
Result<CertificateFiles> prepareCertificates(const std::filesystem::path& directory);

}  // namespace tarvik::service
