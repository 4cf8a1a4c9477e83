// SPDX-License-Identifier: MIT

#include "speech-service/CertificateFactory.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>

#include <array>
#include <ctime>

namespace tarvik::service {

namespace {

constexpr long secondsPerDay = 24L * 60 * 60;
constexpr long authorityDays = 3650;
// Some clients refuse server certificates with a longer validity.
constexpr long serverDays = 397;
constexpr long renewalDays = 30;

struct Profile {
    const char* commonName;
    long days;
    std::array<std::pair<int, const char*>, 5> extensions;
};

constexpr Profile authorityProfile{
    "Tarvik Speech Service (this computer)",
    authorityDays,
    {{{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
      {NID_key_usage, "critical,keyCertSign,cRLSign"},
      {NID_name_constraints,
       "critical,permitted;DNS:localhost,permitted;IP:127.0.0.1/255.255.255.255,"
       "permitted;IP:::1/FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF:FFFF"},
      {NID_subject_key_identifier, "hash"},
      {NID_authority_key_identifier, "keyid"}}}};

constexpr Profile serverProfile{"localhost",
                                serverDays,
                                {{{NID_basic_constraints, "critical,CA:FALSE"},
                                  {NID_key_usage, "critical,digitalSignature"},
                                  {NID_ext_key_usage, "serverAuth"},
                                  {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"},
                                  {NID_authority_key_identifier, "keyid"}}}};

Error openSslError() {
    std::array<char, 256> text{};
    const unsigned long code = ERR_get_error();
    ERR_error_string_n(code, text.data(), text.size());
    ERR_clear_error();
    return {0, "A certificate could not be made: " + std::string(text.data())};
}

bool setSerialNumber(X509* certificate) {
    // 127 bits, because a serial number must be positive.
    std::array<unsigned char, 16> bytes{};
    if (RAND_bytes(bytes.data(), bytes.size()) != 1) {
        return false;
    }
    bytes[0] &= 0x7F;
    const std::unique_ptr<BIGNUM, OpenSslDeleter<BN_free>> number(
        BN_bin2bn(bytes.data(), bytes.size(), nullptr));
    return number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate));
}

bool addExtensions(X509* certificate, X509* issuer, const Profile& profile) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    for (const auto& [kind, value] : profile.extensions) {
        const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
        if (!extension || X509_add_ext(certificate, extension.get(), -1) != 1) {
            return false;
        }
    }
    return true;
}

// Without an issuer the certificate is self-signed.
Result<Identity> makeIdentity(const Profile& profile, const Identity* issuer) {
    Identity made{Certificate(X509_new()), Key(EVP_EC_gen("P-256"))};
    if (!made.certificate || !made.key) {
        return openSslError();
    }
    X509* certificate = made.certificate.get();
    X509* issuerCertificate = issuer ? issuer->certificate.get() : certificate;
    X509_NAME* name = X509_get_subject_name(certificate);
    const auto* commonName = reinterpret_cast<const unsigned char*>(profile.commonName);
    const bool isMade =
        X509_set_version(certificate, X509_VERSION_3) == 1 && setSerialNumber(certificate) &&
        X509_NAME_add_entry_by_NID(name, NID_commonName, MBSTRING_UTF8, commonName, -1, -1, 0) ==
            1 &&
        X509_set_issuer_name(certificate, X509_get_subject_name(issuerCertificate)) == 1 &&
        // Valid since yesterday, because a clock may be set back later.
        X509_gmtime_adj(X509_getm_notBefore(certificate), -secondsPerDay) &&
        X509_gmtime_adj(X509_getm_notAfter(certificate), profile.days * secondsPerDay) &&
        X509_set_pubkey(certificate, made.key.get()) == 1 &&
        addExtensions(certificate, issuerCertificate, profile) &&
        X509_sign(certificate, issuer ? issuer->key.get() : made.key.get(), EVP_sha256()) > 0;
    if (!isMade) {
        return openSslError();
    }
    return made;
}

MemoryBio memoryBioOf(std::string_view text) {
    return MemoryBio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

std::string contentOf(const MemoryBio& bio) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

}  // namespace

Result<Identity> makeAuthority() {
    return makeIdentity(authorityProfile, nullptr);
}

Result<Identity> makeServerIdentity(const Identity& authority) {
    return makeIdentity(serverProfile, &authority);
}

bool isUsable(const Identity& identity) {
    if (!identity.certificate || !identity.key) {
        return false;
    }
    std::time_t now = std::time(nullptr);
    std::time_t nextMonth = now + renewalDays * secondsPerDay;
    const X509* certificate = identity.certificate.get();
    const bool isUsable = X509_check_private_key(certificate, identity.key.get()) == 1 &&
                          X509_cmp_time(X509_get0_notBefore(certificate), &now) < 0 &&
                          X509_cmp_time(X509_get0_notAfter(certificate), &nextMonth) > 0;
    ERR_clear_error();
    return isUsable;
}

bool isIssuedBy(const Identity& authority, const Identity& certificate) {
    const bool isIssued = X509_check_issued(authority.certificate.get(),
                                            certificate.certificate.get()) == X509_V_OK &&
                          X509_verify(certificate.certificate.get(), authority.key.get()) == 1;
    ERR_clear_error();
    return isIssued;
}

std::string pemOf(const Certificate& certificate) {
    const MemoryBio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_X509(bio.get(), certificate.get());
    return contentOf(bio);
}

std::string pemOf(const Key& key) {
    const MemoryBio bio(BIO_new(BIO_s_mem()));
    PEM_write_bio_PrivateKey(bio.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    return contentOf(bio);
}

Identity identityFromPem(std::string_view certificate, std::string_view key) {
    // Without a password OpenSSL would ask for one on the terminal.
    char noPassword[] = "";
    Identity identity{
        Certificate(PEM_read_bio_X509(memoryBioOf(certificate).get(), nullptr, nullptr, nullptr)),
        Key(PEM_read_bio_PrivateKey(memoryBioOf(key).get(), nullptr, nullptr, noPassword))};
    ERR_clear_error();
    return identity;
}

}  // namespace tarvik::service
