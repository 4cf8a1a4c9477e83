#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>

#include "platform/WebSocket.h"

namespace tarvik::linuxdesktop {

/// Turns the text frames in a stream of bytes from a server into binary ones, and remembers which
/// they were.
///
/// Beast ends a connection whose text is not UTF-8. One such message must cost no more than itself,
/// so Beast sees binary messages only, and the text is looked at when it is whole.
class FrameKinds {
  public:
    /// The next bytes from the server, from the first one of its reply to the handshake; any
    /// pieces.
    void process(std::span<unsigned char> bytes);
    /// What the message that has arrived was. Once a message, in their order.
    platform::WebSocketMessage::Kind take();

  private:
    enum class Part { handshake, firstByte, shortLength, longLength, payload, notFrames };

    void processHandshake(unsigned char byte);
    void processFirstByte(unsigned char& byte);
    void processShortLength(unsigned char byte);
    void beginPayload();

    Part part_ = Part::handshake;
    std::string statusLine_;
    std::size_t lineEndMatched_ = 0;
    std::size_t lengthBytes_ = 0;
    std::uint64_t remaining_ = 0;
    std::deque<platform::WebSocketMessage::Kind> kinds_;
};

}  // namespace tarvik::linuxdesktop
