// SPDX-License-Identifier: MIT

#include "speech-service/Digest.h"

#include <array>

namespace tarvik::service {

Digest::Digest() : context_(EVP_MD_CTX_new()) {
    EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
}

void Digest::add(std::span<const std::uint8_t> bytes) {
    EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
}

std::string Digest::text() const {
    // A copy, because the end of a computation is final.
    const Digest copy;
    EVP_MD_CTX_copy_ex(copy.context_.get(), context_.get());
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned size = 0;
    EVP_DigestFinal_ex(copy.context_.get(), bytes.data(), &size);
    std::string text;
    for (const unsigned char byte : std::span(bytes).first(size)) {
        constexpr std::string_view digits = "0123456789abcdef";
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

}  // namespace tarvik::service
