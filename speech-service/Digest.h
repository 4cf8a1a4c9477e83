// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "speech-service/OpenSslHandles.h"

namespace tarvik::service {

/// The SHA-256 of a sequence of bytes that comes in pieces.
class Digest {
  public:
    Digest();

    void add(std::span<const std::uint8_t> bytes);

    /// The digest of the bytes so far in hexadecimal digits.
    std::string text() const;

  private:
    std::unique_ptr<EVP_MD_CTX, OpenSslDeleter<EVP_MD_CTX_free>> context_;
};

}  // namespace tarvik::service
