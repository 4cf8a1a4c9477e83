// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/SystemAuthorities.h"

#include <openssl/x509.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace tarvik::linuxdesktop {

namespace {

std::size_t countCertificates(const std::string& bundle) {
    std::size_t count = 0;
    std::ifstream file(bundle);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("-----BEGIN ")) {
            ++count;
        }
    }
    return count;
}

// Eight hexadecimal digits, a full stop, and the number of the authority among those of one hash.
bool isHash(std::string_view name) {
    constexpr std::size_t digits = 8;
    const auto isHexDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return name.size() > digits + 1 && name[digits] == '.' &&
           std::ranges::all_of(name.substr(0, digits), isHexDigit) &&
           std::ranges::all_of(name.substr(digits + 1), isDigit);
}

std::size_t countHashes(const std::string& folder) {
    std::size_t count = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code missing;
        if (isHash(entry->path().filename().native()) && entry->is_regular_file(missing)) {
            ++count;
        }
    }
    return count;
}

}  // namespace

AuthorityReading systemAuthorityReading() {
    const bool isReplaced = std::getenv(X509_get_default_cert_file_env()) != nullptr ||
                            std::getenv(X509_get_default_cert_dir_env()) != nullptr;
    return !isReplaced &&
                   hasEveryAuthority(X509_get_default_cert_dir(), X509_get_default_cert_file())
               ? AuthorityReading::onDemand
               : AuthorityReading::ahead;
}

void trustSystemAuthorities(SSL_CTX* context, AuthorityReading reading) {
    if (reading == AuthorityReading::onDemand) {
        SSL_CTX_set_default_verify_dir(context);
    } else {
        SSL_CTX_set_default_verify_paths(context);
    }
}

bool hasEveryAuthority(const std::string& folder, const std::string& bundle) {
    const std::size_t certificates = countCertificates(bundle);
    return certificates > 0 && countHashes(folder) >= certificates;
}

}  // namespace tarvik::linuxdesktop
