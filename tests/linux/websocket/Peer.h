// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/ssl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::tests {

/// The server's end of a connection. Operations block, and throw after 10 s. The class shares no
/// code with the client.
class Peer {
  public:
    struct Frame {
        int opcode = 0;
        std::string payload;
        bool isMasked = false;

        /// The code of a close frame.
        int closeCode() const;
    };

    static constexpr int text = 1;
    static constexpr int data = 2;
    static constexpr int close = 8;
    static constexpr int ping = 9;
    static constexpr int pong = 10;
    static constexpr std::uint8_t final = 0x80;

    explicit Peer(int socket);
    Peer(Peer&& other) noexcept;
    Peer& operator=(Peer&&) = delete;
    ~Peer();

    /// Does the TLS handshake. False when the client ends the handshake.
    bool startTls(SSL_CTX* context);
    /// Whether the handshake resumed an earlier session.
    bool isResumed() const;
    /// The server name that the client indicated in the TLS handshake.
    std::string serverName() const;
    /// The header of a request with its final blank line. Empty at the end of the connection.
    std::string readHead();
    /// The response that accepts the upgrade request `head`.
    static std::string upgradeResponse(const std::string& head, const std::string& protocol);

    void write(std::string_view bytes);
    /// Like write(), but false when the client accepts nothing for 0.5 s. The next write must
    /// repeat the same bytes then.
    bool tryWrite(std::string_view bytes);
    static std::string frame(int opcode, std::string_view payload, std::uint8_t flags = final);
    static std::string closeFrame(int code, std::string_view reason);

    /// The next frame. Empty at the end of the connection.
    std::optional<Frame> readFrame();
    /// Whether the connection ends before another frame.
    bool readEnd() { return !readFrame(); }

    /// Ends the connection with close_notify and FIN.
    void end();
    /// Ends the connection with RST only.
    void reset();

  private:
    bool readExactly(void* bytes, std::size_t size);
    long readSome(void* bytes, std::size_t size);

    int socket_;
    SSL* tls_ = nullptr;
};

}  // namespace tarvik::tests
