// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/TrustStore.h"

#include <openssl/x509v3.h>

#include <boost/asio/ip/address.hpp>

namespace tarvik::linuxdesktop {

namespace ssl = boost::asio::ssl;

void TrustStore::prepare() {
    if (authorityReading() == AuthorityReading::ahead) {
        sslContext();
    }
}

AuthorityReading TrustStore::authorityReading() {
    std::call_once(isReadingKnown_, [this] { authorityReading_ = systemAuthorityReading(); });
    return authorityReading_;
}

ssl::context& TrustStore::sslContext() {
    std::call_once(isLoaded_, [this] {
        context_.emplace(ssl::context::tls_client);
        SSL_CTX_set_min_proto_version(context_->native_handle(), TLS1_2_VERSION);
        trustSystemAuthorities(context_->native_handle(), authorityReading());
        if (!authority_.empty()) {
            boost::system::error_code error;
            context_->load_verify_file(authority_, error);
            if (error && onAuthorityError_) {
                onAuthorityError_(error.message());
            }
        }
        // OpenSSL reports no error here.
        boost::system::error_code ignored;
        context_->set_verify_mode(ssl::verify_peer, ignored);
        SSL_CTX_set_mode(context_->native_handle(), SSL_MODE_RELEASE_BUFFERS);
        sessions_.collectFrom(context_->native_handle());
    });
    return *context_;
}

bool TrustStore::requireHost(SSL* ssl, const std::string& host) {
    X509_VERIFY_PARAM* parameters = SSL_get0_param(ssl);
    boost::system::error_code parseError;
    boost::asio::ip::make_address(host, parseError);
    if (!parseError) {
        return X509_VERIFY_PARAM_set1_ip_asc(parameters, host.c_str()) == 1;
    }
    X509_VERIFY_PARAM_set_hostflags(parameters, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return X509_VERIFY_PARAM_set1_host(parameters, host.data(), host.size()) == 1 &&
           SSL_ctrl(ssl, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                    const_cast<char*>(host.c_str())) == 1;
}

std::optional<std::string> TrustStore::verifyError(SSL* ssl) {
    const long result = SSL_get_verify_result(ssl);
    if (result == X509_V_OK) {
        return std::nullopt;
    }
    return X509_verify_cert_error_string(result);
}

}  // namespace tarvik::linuxdesktop
