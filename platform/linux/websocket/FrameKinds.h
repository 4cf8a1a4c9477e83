// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>

#include "platform/WebSocket.h"

namespace tarvik::linuxdesktop {

/// Rewrites text frames from a server into binary frames and records the kind of each message.
///
/// Beast ends a connection when a text message is not valid UTF-8. Such a message must not end the
/// connection here. So Beast sees binary messages only, and whole messages are validated later.
class FrameKinds {
  public:
    /// Rewrites the next bytes from the server in place. The first byte is that of the handshake
    /// response. Chunks may have any size.
    void process(std::span<unsigned char> bytes);
    /// Takes the kind of the next whole message. To be called once for each message, in order.
    platform::WebSocketMessage::Kind take();

  private:
    enum class Part { handshake, firstByte, shortLength, longLength, payload, notFrames };

    void processHandshake(unsigned char byte);
    void processFirstByte(unsigned char& byte);
    void processShortLength(unsigned char byte);
    void processLongLength(unsigned char& byte);
    void beginPayload();

    Part part_ = Part::handshake;
    std::string statusLine_;
    std::size_t lineEndMatched_ = 0;
    std::size_t lengthBytes_ = 0;
    bool isLengthTooLong_ = false;
    std::uint64_t remaining_ = 0;
    std::deque<platform::WebSocketMessage::Kind> kinds_;
};

}  // namespace tarvik::linuxdesktop
