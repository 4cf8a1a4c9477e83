// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <openssl/x509_vfy.h>
#include <sys/stat.h>

#include <thread>

#include "speech-service/CertificateFactory.h"
#include "speech-service/CertificateStore.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

namespace {

namespace filesystem = std::filesystem;
using tests::contentOf;

mode_t modeOf(const filesystem::path& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 0777;
}

/// Verifies a certificate like a client. X509_V_OK, or the reason as OpenSSL's error.
int verify(X509* authority, X509* certificate, const char* host, const char* address) {
    const std::unique_ptr<X509_STORE, OpenSslDeleter<X509_STORE_free>> store(X509_STORE_new());
    X509_STORE_add_cert(store.get(), authority);
    const std::unique_ptr<X509_STORE_CTX, OpenSslDeleter<X509_STORE_CTX_free>> context(
        X509_STORE_CTX_new());
    X509_STORE_CTX_init(context.get(), store.get(), certificate, nullptr);
    X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
    X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_X509_STRICT);
    X509_STORE_CTX_set_purpose(context.get(), X509_PURPOSE_SSL_SERVER);
    if (host) {
        X509_VERIFY_PARAM_set1_host(parameters, host, 0);
    }
    if (address) {
        X509_VERIFY_PARAM_set1_ip_asc(parameters, address);
    }
    X509_verify_cert(context.get());
    return X509_STORE_CTX_get_error(context.get());
}

class Certificates : public testing::Test {
  protected:
    CertificateFiles prepare() { return prepareCertificates(state()).value(); }
    filesystem::path state() const { return folder_ / "state" / "service"; }

  private:
    tests::TemporaryFolder folder_;
};

TEST_F(Certificates, AreTrustedForEveryNameOfThisComputer) {
    const CertificateFiles files = prepare();
    const Identity authority =
        identityFromPem(contentOf(files.authority), contentOf(files.authorityKey));
    const Identity server = identityFromPem(contentOf(files.server), contentOf(files.serverKey));
    ASSERT_TRUE(isUsable(authority));
    ASSERT_TRUE(isUsable(server));
    X509* trusted = authority.certificate.get();
    X509* shown = server.certificate.get();
    EXPECT_EQ(verify(trusted, shown, "localhost", nullptr), X509_V_OK);
    EXPECT_EQ(verify(trusted, shown, nullptr, "127.0.0.1"), X509_V_OK);
    EXPECT_EQ(verify(trusted, shown, nullptr, "::1"), X509_V_OK);
}

TEST_F(Certificates, AreTrustedForNoOtherName) {
    const Identity authority = makeAuthority().value();
    const Identity server = makeServerIdentity(authority).value();
    X509* trusted = authority.certificate.get();
    X509* shown = server.certificate.get();
    EXPECT_EQ(verify(trusted, shown, "example.org", nullptr), X509_V_ERR_HOSTNAME_MISMATCH);
    EXPECT_EQ(verify(trusted, shown, nullptr, "127.0.0.2"), X509_V_ERR_IP_ADDRESS_MISMATCH);
}

TEST_F(Certificates, CannotVouchForOtherNames) {
    const Identity authority = makeAuthority().value();
    Identity forged = makeServerIdentity(authority).value();
    X509* certificate = forged.certificate.get();
    const Extension elsewhere(
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:example.org"));
    X509_EXTENSION_free(
        X509_delete_ext(certificate, X509_get_ext_by_NID(certificate, NID_subject_alt_name, -1)));
    X509_add_ext(certificate, elsewhere.get(), -1);
    X509_sign(certificate, authority.key.get(), EVP_sha256());
    EXPECT_EQ(verify(authority.certificate.get(), certificate, "example.org", nullptr),
              X509_V_ERR_PERMITTED_VIOLATION);
}

TEST_F(Certificates, AreMadeOnceAndUsedAgain) {
    const CertificateFiles files = prepare();
    const std::string authority = contentOf(files.authority);
    const std::string server = contentOf(files.server);
    prepare();
    EXPECT_EQ(contentOf(files.authority), authority);
    EXPECT_EQ(contentOf(files.server), server);
}

TEST_F(Certificates, AreMadeOnceByServicesThatStartTogether) {
    std::string first;
    std::string second;
    const auto prepareInto = [this](std::string& content) {
        return [this, &content] { content = contentOf(prepare().authority); };
    };
    std::thread one(prepareInto(first));
    std::thread other(prepareInto(second));
    one.join();
    other.join();
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(first, second);
}

TEST_F(Certificates, KeepTheirKeysFromOtherUsers) {
    const CertificateFiles files = prepare();
    EXPECT_EQ(modeOf(state()), 0700U);
    EXPECT_EQ(modeOf(files.authorityKey), 0600U);
    EXPECT_EQ(modeOf(files.serverKey), 0600U);
    EXPECT_EQ(modeOf(files.authority), 0644U);
}

TEST_F(Certificates, AreRenewedByTheSameAuthorityWhenTheyEndSoon) {
    const CertificateFiles files = prepare();
    const std::string authority = contentOf(files.authority);
    const Identity trusted = identityFromPem(authority, contentOf(files.authorityKey));
    const Identity old = identityFromPem(contentOf(files.server), contentOf(files.serverKey));
    constexpr long tenDays = 10 * 24 * 60 * 60;
    X509_gmtime_adj(X509_getm_notAfter(old.certificate.get()), tenDays);
    X509_sign(old.certificate.get(), trusted.key.get(), EVP_sha256());
    tests::putFile(files.server, pemOf(old.certificate));
    prepare();
    const Identity renewed = identityFromPem(contentOf(files.server), contentOf(files.serverKey));
    EXPECT_TRUE(isUsable(renewed));
    EXPECT_TRUE(isIssuedBy(trusted, renewed));
    EXPECT_EQ(contentOf(files.authority), authority);
}

TEST_F(Certificates, AreMadeAnewAndKeptBesideWhenDamaged) {
    const CertificateFiles files = prepare();
    tests::putFile(files.authority, "not a certificate");
    prepare();
    const Identity authority =
        identityFromPem(contentOf(files.authority), contentOf(files.authorityKey));
    const Identity server = identityFromPem(contentOf(files.server), contentOf(files.serverKey));
    EXPECT_TRUE(isUsable(authority));
    EXPECT_TRUE(isIssuedBy(authority, server));
    EXPECT_EQ(contentOf(state() / "ca.pem.unusable"), "not a certificate");
}

TEST_F(Certificates, SayWhichFolderCannotBeMade) {
    const Result<CertificateFiles> files = prepareCertificates("/proc/nowhere");
    ASSERT_FALSE(files);
    EXPECT_TRUE(files.error().localizedDescription.starts_with("/proc/nowhere cannot be created"));
}

}  // namespace

}  // namespace tarvik::service
