// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/FrameKinds.h"

#include <algorithm>
#include <string_view>

namespace tarvik::linuxdesktop {

namespace {

using Kind = platform::WebSocketMessage::Kind;

constexpr std::string_view upgradeStatus = "HTTP/1.1 101";
constexpr std::string_view headerEnd = "\r\n\r\n";

// RFC 6455, 5.2.
constexpr unsigned char opcodeMask = 0x0F;
constexpr unsigned char textOpcode = 1;
constexpr unsigned char binaryOpcode = 2;
constexpr unsigned char lengthMask = 0x7F;

}  // namespace

void FrameKinds::process(std::span<unsigned char> bytes) {
    while (!bytes.empty() && part_ != Part::notFrames) {
        std::size_t used = 1;
        switch (part_) {
            case Part::handshake:
                processHandshake(bytes.front());
                break;
            case Part::firstByte:
                processFirstByte(bytes.front());
                break;
            case Part::shortLength:
                processShortLength(bytes.front());
                break;
            case Part::longLength:
                processLongLength(bytes.front());
                break;
            case Part::payload:
                used = static_cast<std::size_t>(std::min<std::uint64_t>(remaining_, bytes.size()));
                remaining_ -= used;
                beginPayload();
                break;
            case Part::notFrames:
                break;
        }
        bytes = bytes.subspan(used);
    }
}

void FrameKinds::processHandshake(unsigned char byte) {
    const auto character = static_cast<char>(byte);
    if (statusLine_.size() < upgradeStatus.size()) {
        statusLine_.push_back(character);
    }
    if (character == headerEnd[lineEndMatched_]) {
        ++lineEndMatched_;
    } else {
        lineEndMatched_ = character == headerEnd.front() ? 1 : 0;
    }
    if (lineEndMatched_ == headerEnd.size()) {
        // The body of a refusal has no frames.
        part_ = statusLine_ == upgradeStatus ? Part::firstByte : Part::notFrames;
    }
}

void FrameKinds::processFirstByte(unsigned char& byte) {
    const unsigned char opcode = byte & opcodeMask;
    if (opcode == textOpcode) {
        byte = static_cast<unsigned char>((byte & ~opcodeMask) | binaryOpcode);
        kinds_.push_back(Kind::string);
    } else if (opcode == binaryOpcode) {
        kinds_.push_back(Kind::data);
    }
    part_ = Part::shortLength;
}

// The mask bit is ignored: Beast ends the connection when a server masks a frame.
void FrameKinds::processShortLength(unsigned char byte) {
    const unsigned char length = byte & lengthMask;
    remaining_ = 0;
    if (length >= 126) {
        lengthBytes_ = length == 126 ? 2 : 8;
        part_ = Part::longLength;
        return;
    }
    remaining_ = length;
    beginPayload();
}

// A length of 64 bits must not begin with a one (RFC 6455, 5.2), which Beast does not check: it
// would take everything that follows for one endless frame. A length of zero in this form breaks
// the protocol as well, and Beast ends the connection.
void FrameKinds::processLongLength(unsigned char& byte) {
    constexpr unsigned char topBit = 0x80;
    isLengthTooLong_ = isLengthTooLong_ || (lengthBytes_ == 8 && (byte & topBit) != 0);
    if (isLengthTooLong_) {
        byte = 0;
    }
    remaining_ = remaining_ << 8 | byte;
    if (--lengthBytes_ == 0) {
        beginPayload();
    }
}

void FrameKinds::beginPayload() {
    part_ = remaining_ == 0 ? Part::firstByte : Part::payload;
}

Kind FrameKinds::take() {
    if (kinds_.empty()) {
        return Kind::other;
    }
    const Kind kind = kinds_.front();
    kinds_.pop_front();
    return kind;
}

}  // namespace tarvik::linuxdesktop
