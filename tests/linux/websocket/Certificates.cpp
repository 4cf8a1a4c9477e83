// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/Certificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace tarvik::tests {

namespace {

template <auto release>
struct Deleter {
    template <typename Handle>
    void operator()(Handle* handle) const {
        release(handle);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;

constexpr long day = 24 * 60 * 60;

void check(bool isDone) {
    if (!isDone) {
        throw std::runtime_error("OpenSSL failed while making a certificate");
    }
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION_free>> extension(
        X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str()));
    check(extension && X509_add_ext(certificate, extension.get(), -1) == 1);
}

/// A certificate without extensions and signature.
Certificate makeBlank(const Key& key, long serial, const std::string& name, long validity) {
    Certificate certificate(X509_new());
    X509* handle = certificate.get();
    X509_set_version(handle, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(handle), serial);
    X509_gmtime_adj(X509_getm_notBefore(handle), -10 * day);
    X509_gmtime_adj(X509_getm_notAfter(handle), validity);
    X509_set_pubkey(handle, key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(handle), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    return certificate;
}

struct Authority {
    Key key{EVP_EC_gen("P-256")};
    Certificate certificate;

    explicit Authority(const std::string& name) : certificate(makeBlank(key, 1, name, 10 * day)) {
        X509* handle = certificate.get();
        X509_set_issuer_name(handle, X509_get_subject_name(handle));
        addExtension(handle, handle, NID_basic_constraints, "critical,CA:TRUE");
        addExtension(handle, handle, NID_key_usage, "critical,keyCertSign,cRLSign");
        addExtension(handle, handle, NID_subject_key_identifier, "hash");
        check(X509_sign(handle, key.get(), EVP_sha256()) > 0);
    }
};

/// An authority with its certificate in a file, which goes with it.
class AuthorityFile {
  public:
    explicit AuthorityFile(const std::string& name) : authority(name) {
        std::string pattern = std::filesystem::temp_directory_path() / "web-socket-test-XXXXXX";
        check(mkdtemp(pattern.data()) != nullptr);
        folder_ = pattern;
        const std::unique_ptr<BIO, Deleter<BIO_free_all>> out(BIO_new_file(path().c_str(), "w"));
        check(out && PEM_write_bio_X509(out.get(), authority.certificate.get()) == 1);
    }
    ~AuthorityFile() {
        std::error_code ignored;  // A folder in the temporary directory does no harm.
        std::filesystem::remove_all(folder_, ignored);
    }
    AuthorityFile(const AuthorityFile&) = delete;
    AuthorityFile& operator=(const AuthorityFile&) = delete;

    std::string path() const { return folder_ / "authority.pem"; }

    const Authority authority;

  private:
    std::filesystem::path folder_;
};

const AuthorityFile& strangeAuthority() {
    static const AuthorityFile stranger("Authority that nobody knows");
    return stranger;
}

}  // namespace

std::string strangeAuthorityFile() {
    return strangeAuthority().path();
}

SslContext makeServerContext(const TestCertificate& wanted) {
    static const AuthorityFile trusted("Authority of a test");
    static const int isSet = setenv("SSL_CERT_FILE", trusted.path().c_str(), 1);
    check(isSet == 0);
    const Authority& authority = (wanted.isTrusted ? trusted : strangeAuthority()).authority;

    const Key key(EVP_EC_gen("P-256"));
    const Certificate certificate = makeBlank(key, 2, "Server of a test", wanted.validity);
    X509* handle = certificate.get();
    X509_set_issuer_name(handle, X509_get_subject_name(authority.certificate.get()));
    addExtension(handle, authority.certificate.get(), NID_subject_alt_name, wanted.names);
    check(X509_sign(handle, authority.key.get(), EVP_sha256()) > 0);

    SslContext context(SSL_CTX_new(TLS_server_method()));
    check(SSL_CTX_use_certificate(context.get(), handle) == 1);
    check(SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1);
    return context;
}

}  // namespace tarvik::tests
