#pragma once

#include <openssl/ssl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::tests {

/// The other end of a connection, for the thread of the test: every operation waits until it is
/// done, and throws when that takes ten seconds. It shares no code with the client.
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

    /// Speaks TLS from now on; false when the client does not want to.
    bool startTls(SSL_CTX* context);
    /// The server name that the client asked for.
    std::string serverName() const;
    /// The head of a request, with its last line break; empty when the client has gone.
    std::string readHead();
    /// The answer that accepts the web socket asked for by `head`.
    static std::string acceptance(const std::string& head, const std::string& protocol);

    void write(std::string_view bytes);
    /// Like write(), but false when the client takes nothing any more for half a second; the same
    /// bytes must come next.
    bool tryWrite(std::string_view bytes);
    static std::string frame(int opcode, std::string_view payload, std::uint8_t flags = final);
    static std::string closeFrame(int code, std::string_view reason);

    /// The next frame; nothing when the client has gone.
    std::optional<Frame> readFrame();
    /// Whether the client ends the connection without sending anything more.
    bool readEnd() { return !readFrame(); }

    /// Ends the connection; a reset has no farewell at all.
    void end();
    void reset();

  private:
    bool readExactly(void* bytes, std::size_t size);
    long readSome(void* bytes, std::size_t size);

    int socket_;
    SSL* tls_ = nullptr;
};

}  // namespace tarvik::tests
