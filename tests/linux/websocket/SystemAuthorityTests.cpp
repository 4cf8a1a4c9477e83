// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/websocket/SystemAuthorities.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::hasEveryAuthority;

template <auto deleter>
struct Freed {
    template <typename T>
    void operator()(T* object) const {
        deleter(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Freed<&SSL_CTX_free>>;
using Certificate = std::unique_ptr<X509, Freed<&X509_free>>;
using Verification = std::unique_ptr<X509_STORE_CTX, Freed<&X509_STORE_CTX_free>>;

/// A folder of authorities, and a bundle of two.
class SystemAuthorities : public ::testing::Test {
  protected:
    SystemAuthorities() {
        std::filesystem::create_directory(authorities());
        putFile(bundle(),
                "One\n-----BEGIN CERTIFICATE-----\nMII\n-----END CERTIFICATE-----\n"
                "-----BEGIN TRUSTED CERTIFICATE-----\nMII\n-----END TRUSTED CERTIFICATE-----\n");
    }

    std::filesystem::path authorities() const { return folder_ / "certs"; }
    std::filesystem::path bundle() const { return folder_ / "cert.pem"; }
    void put(const std::string& name) { putFile(authorities() / name, "MII"); }
    bool isComplete() const { return hasEveryAuthority(authorities(), bundle()); }

  private:
    TemporaryFolder folder_;
};

TEST_F(SystemAuthorities, AreCompleteWhenEachHasItsHash) {
    put("002c0b4f.0");
    EXPECT_FALSE(isComplete());
    put("002c0b4f.1");
    EXPECT_TRUE(isComplete());
    put("ffffffff.10");
    EXPECT_TRUE(isComplete());
}

TEST_F(SystemAuthorities, AreNotCompleteByOtherFiles) {
    put("ca-certificates.crt");
    put("002c0b4f.r0");
    put("002c0b4f.");
    put("002c0b4f0");
    put("002c0b4.0");
    put("002C0B4F.0");
    EXPECT_FALSE(isComplete());
}

TEST_F(SystemAuthorities, AreNotCompleteByLinksToNothing) {
    put("One.pem");
    std::filesystem::create_symlink("One.pem", authorities() / "002c0b4f.0");
    std::filesystem::create_symlink("Two.pem", authorities() / "062cdee6.0");
    EXPECT_FALSE(isComplete());
    put("Two.pem");
    EXPECT_TRUE(isComplete());
}

TEST_F(SystemAuthorities, AreNotCompleteWithoutAFolderOrABundle) {
    put("002c0b4f.0");
    put("062cdee6.0");
    EXPECT_FALSE(hasEveryAuthority(authorities() / "missing", bundle()));
    EXPECT_FALSE(hasEveryAuthority(authorities(), bundle().string() + ".missing"));
    putFile(bundle(), "");
    EXPECT_FALSE(isComplete());
}

/// Takes a variable out of the environment until the end of the object.
class WithoutVariable {
  public:
    explicit WithoutVariable(const char* name) : name_(name) {
        if (const char* value = std::getenv(name)) {
            before_ = value;
        }
        unsetenv(name);
    }
    ~WithoutVariable() {
        if (before_) {
            setenv(name_, before_->c_str(), 1);
        }
    }
    WithoutVariable(const WithoutVariable&) = delete;
    WithoutVariable& operator=(const WithoutVariable&) = delete;

  private:
    const char* name_;
    std::optional<std::string> before_;
};

int sizeOf(X509_STORE* store) {
    return sk_X509_OBJECT_num(X509_STORE_get0_objects(store));
}

/// Whether the store verifies an authority, which need not be valid any more.
bool isTrusted(X509_STORE* store, X509* authority) {
    const Verification verification(X509_STORE_CTX_new());
    return X509_STORE_CTX_init(verification.get(), store, authority, nullptr) == 1 &&
           X509_VERIFY_PARAM_set_flags(X509_STORE_CTX_get0_param(verification.get()),
                                       X509_V_FLAG_NO_CHECK_TIME) == 1 &&
           X509_verify_cert(verification.get()) == 1;
}

class AuthoritiesOfThisSystem : public ::testing::Test {
  protected:
    Context trusting() const {
        Context context(SSL_CTX_new(TLS_client_method()));
        linuxdesktop::trustSystemAuthorities(context.get(), linuxdesktop::systemAuthorityReading());
        return context;
    }

    const char* bundle() const { return X509_get_default_cert_file(); }

  private:
    const WithoutVariable noFile_{X509_get_default_cert_file_env()};
    const WithoutVariable noFolder_{X509_get_default_cert_dir_env()};
};

// Debian has a file for each authority. An authority with two certificates of one name may be
// refused on its own, wherever it is read.
TEST_F(AuthoritiesOfThisSystem, AreTrustedAsThoseOfTheBundleAndNoneIsReadBefore) {
    const Context context = trusting();
    X509_STORE* store = SSL_CTX_get_cert_store(context.get());
    EXPECT_EQ(sizeOf(store), 0);
    const Context other(SSL_CTX_new(TLS_client_method()));
    ASSERT_EQ(SSL_CTX_load_verify_file(other.get(), bundle()), 1)
        << "the packages openssl and ca-certificates are missing";

    const std::unique_ptr<BIO, Freed<&BIO_free_all>> file(BIO_new_file(bundle(), "r"));
    int trusted = 0;
    while (const Certificate authority{PEM_read_bio_X509(file.get(), nullptr, nullptr, nullptr)}) {
        const bool isInFolder = isTrusted(store, authority.get());
        EXPECT_EQ(isInFolder, isTrusted(SSL_CTX_get_cert_store(other.get()), authority.get()));
        trusted += isInFolder ? 1 : 0;
    }
    EXPECT_GT(trusted, 100);
}

TEST_F(AuthoritiesOfThisSystem, AreReadWhereAFileReplacesThem) {
    setenv(X509_get_default_cert_file_env(), bundle(), 1);
    const Context context = trusting();
    unsetenv(X509_get_default_cert_file_env());
    EXPECT_GT(sizeOf(SSL_CTX_get_cert_store(context.get())), 100);
}

}  // namespace

}  // namespace tarvik::tests
