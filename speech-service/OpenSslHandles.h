// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace tarvik::service {

/// A deleter that calls OpenSSL's function for the type.
template <auto release>
struct OpenSslDeleter {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};

using Certificate = std::unique_ptr<X509, OpenSslDeleter<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, OpenSslDeleter<EVP_PKEY_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, OpenSslDeleter<X509_EXTENSION_free>>;
using MemoryBio = std::unique_ptr<BIO, OpenSslDeleter<BIO_free>>;

/// A certificate with its private key.
struct Identity {
    Certificate certificate;
    Key key;
};

}  // namespace tarvik::service
