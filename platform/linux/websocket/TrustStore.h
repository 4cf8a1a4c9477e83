#pragma once

#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <mutex>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// What connections trust: TLS 1.2 or later with the certificates of the system's trust store, or
/// of SSL_CERT_FILE and SSL_CERT_DIR.
class TrustStore {
  public:
    /// The settings of every connection, read from the disk by the first call, which may take some
    /// milliseconds. Any thread but the main thread.
    boost::asio::ssl::context& context() const;

    /// Makes the connection of `ssl` valid only if the other end proves to be `host`, a name or an
    /// address. False when that cannot be arranged; the connection must not be made then.
    [[nodiscard]] static bool expect(SSL* ssl, const std::string& host);

    /// Why the certificate of a failed connection was not accepted; nothing when it was.
    static std::optional<std::string> objection(SSL* ssl);

  private:
    mutable std::once_flag isLoaded_;
    mutable std::optional<boost::asio::ssl::context> context_;
};

}  // namespace tarvik::linuxdesktop
