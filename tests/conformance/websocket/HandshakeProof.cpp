// SPDX-License-Identifier: MIT

#include "tests/conformance/websocket/HandshakeProof.h"

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

namespace tarvik::tests {

namespace {

using Words = std::array<std::uint32_t, 5>;

std::uint32_t byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

// One round of SHA-1: a block of 64 bytes goes into the state.
void addBlock(Words& state, std::string_view block) {
    std::array<std::uint32_t, 80> schedule{};
    for (std::size_t i = 0; i < 16; ++i) {
        schedule[i] = byteAt(block, 4 * i) << 24 | byteAt(block, 4 * i + 1) << 16 |
                      byteAt(block, 4 * i + 2) << 8 | byteAt(block, 4 * i + 3);
    }
    for (std::size_t i = 16; i < schedule.size(); ++i) {
        schedule[i] =
            std::rotl(schedule[i - 3] ^ schedule[i - 8] ^ schedule[i - 14] ^ schedule[i - 16], 1);
    }
    auto [a, b, c, d, e] = state;
    for (std::size_t i = 0; i < schedule.size(); ++i) {
        std::uint32_t mixed = (b ^ c ^ d) + (i < 40 ? 0x6ED9EBA1U : 0xCA62C1D6U);
        if (i < 20) {
            mixed = ((b & c) | (~b & d)) + 0x5A827999U;
        } else if (i >= 40 && i < 60) {
            mixed = ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDCU;
        }
        const std::uint32_t next = std::rotl(a, 5) + mixed + e + schedule[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    const Words added{a, b, c, d, e};
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += added[i];
    }
}

std::string sha1(std::string bytes) {
    constexpr std::size_t blockSize = 64;
    const std::uint64_t bitCount = bytes.size() * 8;
    bytes.push_back('\x80');
    bytes.append((2 * blockSize - 8 - bytes.size() % blockSize) % blockSize, '\0');
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(bitCount >> shift & 0xFF));
    }
    Words state{0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U, 0xC3D2E1F0U};
    for (std::size_t start = 0; start < bytes.size(); start += blockSize) {
        addBlock(state, std::string_view(bytes).substr(start, blockSize));
    }
    std::string digest;
    for (const std::uint32_t word : state) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            digest.push_back(static_cast<char>(word >> shift & 0xFF));
        }
    }
    return digest;
}

std::string base64(std::string bytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t padding = (3 - bytes.size() % 3) % 3;
    bytes.append(padding, '\0');
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::uint32_t group =
            byteAt(bytes, i) << 16 | byteAt(bytes, i + 1) << 8 | byteAt(bytes, i + 2);
        for (int shift = 18; shift >= 0; shift -= 6) {
            text.push_back(digits[group >> shift & 0x3F]);
        }
    }
    return text.replace(text.size() - padding, padding, padding, '=');
}

}  // namespace

std::string handshakeProof(const std::string& key) {
    return base64(sha1(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"));
}

}  // namespace tarvik::tests
