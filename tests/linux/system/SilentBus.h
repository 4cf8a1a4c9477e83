// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <filesystem>
#include <string>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::tests {

/// The socket of a bus that never answers: the kernel accepts connections, and nobody reads them.
class SilentBus {
  public:
    explicit SilentBus(const std::filesystem::path& path)
        : path_(path), socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        constexpr int backlog = 8;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path_.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(socket_.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(socket_.number(), backlog), 0);
    }

    std::string address() const { return "unix:path=" + path_; }

  private:
    std::string path_;
    linuxdesktop::FileDescriptor socket_;
};

}  // namespace tarvik::tests
