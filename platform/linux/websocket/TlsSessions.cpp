// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/TlsSessions.h"

#include <openssl/x509v3.h>

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// The index of this class's pointer in an SSL_CTX. Asio uses the application data.
int dataIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

// The name or the address that the certificate of `ssl` must be for.
std::string verifiedHost(SSL* ssl) {
    X509_VERIFY_PARAM* parameters = SSL_get0_param(ssl);
    if (const char* name = X509_VERIFY_PARAM_get0_host(parameters, 0)) {
        return name;
    }
    char* address = X509_VERIFY_PARAM_get1_ip_asc(parameters);
    std::string host = address != nullptr ? address : "";
    OPENSSL_free(address);
    return host;
}

bool hasValidCertificate(const SSL_SESSION* session) {
    // The declaration of OpenSSL lacks a const.
    const X509* certificate = SSL_SESSION_get0_peer(const_cast<SSL_SESSION*>(session));
    return certificate != nullptr && X509_cmp_current_time(X509_get0_notAfter(certificate)) > 0;
}

}  // namespace

void TlsSessions::collectFrom(SSL_CTX* context) {
    SSL_CTX_set_ex_data(context, dataIndex(), this);
    SSL_CTX_set_session_cache_mode(context,
                                   SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL_STORE);
    SSL_CTX_sess_set_new_cb(context, &TlsSessions::onNewSession);
}

int TlsSessions::onNewSession(SSL* ssl, SSL_SESSION* session) {
    auto& self = *static_cast<TlsSessions*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(ssl), dataIndex()));
    // OpenSSL forbids to resume the original when its connection ends without a close_notify.
    Session newest(SSL_SESSION_dup(session));
    const std::lock_guard lock(self.mutex_);
    self.sessions_[verifiedHost(ssl)] = std::move(newest);
    return 0;  // OpenSSL keeps the reference to the original.
}

void TlsSessions::resume(SSL* ssl) {
    const Session session = take(verifiedHost(ssl));
    if (session && hasValidCertificate(session.get())) {
        // Without the session the handshake is a full one.
        SSL_set_session(ssl, session.get());
    }
}

TlsSessions::Session TlsSessions::take(const std::string& host) {
    const std::lock_guard lock(mutex_);
    auto node = sessions_.extract(host);
    return node ? std::move(node.mapped()) : nullptr;
}

}  // namespace tarvik::linuxdesktop
