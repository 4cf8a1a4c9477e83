// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// What the local sockets between the display server and one program still hold.
struct SocketBacklog {
    /// Bytes of the server that the program has not read.
    std::uint32_t toProgram = 0;
    /// Bytes of the program that the server has not read.
    std::uint32_t toServer = 0;
};

/// The address of the display server at the other end of the socket `descriptor`; empty when the
/// server is not connected by a local socket.
std::string addressOfServer(int descriptor);

/// The backlog of all connections between `process` and the server at `address`, and of those
/// within the process by a socket in the same folder. Empty when the process has no such
/// connection, or when the system or the process does not tell. Never blocks.
std::optional<SocketBacklog> backlogOf(std::int32_t process, const std::string& address);

}  // namespace tarvik::linuxdesktop
