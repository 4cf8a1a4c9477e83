// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarvik::tests {

/// The server's end of a connection without TLS. Operations block, and throw after 10 s. The class
/// shares no code with the client.
class PlainPeer {
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

    /// Takes the ownership of the socket. From then on the process ignores SIGPIPE, which a write
    /// to a connection raises that the client has reset.
    explicit PlainPeer(int socket);
    PlainPeer(PlainPeer&& other) noexcept;
    PlainPeer& operator=(PlainPeer&&) = delete;
    virtual ~PlainPeer();

    /// The header of a request with its final blank line. Empty at the end of the connection.
    std::string readHead();
    /// The response that accepts the upgrade request `head`.
    static std::string upgradeResponse(const std::string& head, const std::string& protocol);

    void write(std::string_view bytes);
    static std::string frame(int opcode, std::string_view payload, std::uint8_t flags = final);
    static std::string closeFrame(int code, std::string_view reason);

    /// The next frame. Empty at the end of the connection.
    std::optional<Frame> readFrame();
    /// Whether the connection ends before another frame.
    bool readEnd() { return !readFrame(); }

    /// Ends the connection with FIN.
    virtual void end();
    /// Ends the connection with RST only.
    virtual void reset();

  protected:
    /// The results are those of recv() and send().
    virtual long readSome(void* bytes, std::size_t size);
    virtual long writeSome(const void* bytes, std::size_t size);

    int descriptor() const { return socket_; }
    /// `direction` is SO_RCVTIMEO or SO_SNDTIMEO.
    void setTimeout(int direction, double seconds);

  private:
    bool readExactly(void* bytes, std::size_t size);

    int socket_;
};

}  // namespace tarvik::tests
