// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/linux/input/SocketBacklog.h"
#include "platform/linux/loop/FileDescriptor.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::backlogOf;
using linuxdesktop::FileDescriptor;

/// A connection whose two ends belong to this process, by a socket at a path.
struct SelfConnection {
    explicit SelfConnection(const std::filesystem::path& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
        const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(bind(listener.number(), generic, sizeof address), 0);
        EXPECT_EQ(listen(listener.number(), 1), 0);
        EXPECT_EQ(connect(program.number(), generic, sizeof address), 0);
        server = FileDescriptor(accept(listener.number(), nullptr, nullptr));
    }

    void tellProgram() const { EXPECT_EQ(write(server.number(), "event", 5), 5); }
    void readInProgram() const {
        std::array<char, 64> buffer{};
        EXPECT_GT(read(program.number(), buffer.data(), buffer.size()), 0);
    }

    FileDescriptor program{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    FileDescriptor server;
};

class SocketBacklogTest : public testing::Test {
  protected:
    std::uint32_t bytesToProgram() const {
        const auto backlog = backlogOf(getpid(), address);
        EXPECT_TRUE(backlog);
        return backlog ? backlog->toProgram : 0;
    }

    const TemporaryFolder folder;
    const TemporaryFolder otherFolder;
    const std::string address = (folder / "wayland-1").string();
    const SelfConnection connection{address};
};

TEST_F(SocketBacklogTest, CountsWhatTheProgramHasNotRead) {
    EXPECT_EQ(bytesToProgram(), 0U);
    connection.tellProgram();
    EXPECT_GT(bytesToProgram(), 0U);
    connection.readInProgram();
    EXPECT_EQ(bytesToProgram(), 0U);
}

TEST_F(SocketBacklogTest, CountsWhatTheProgramHasNotReadFromAProxyOfItsOwn) {
    const SelfConnection proxied(folder / "wayland-proxy-1");
    EXPECT_EQ(bytesToProgram(), 0U);
    proxied.tellProgram();
    EXPECT_GT(bytesToProgram(), 0U);
    proxied.readInProgram();
    EXPECT_EQ(bytesToProgram(), 0U);
}

TEST_F(SocketBacklogTest, LeavesOutWhatTheProgramSaysToItselfElsewhere) {
    const SelfConnection other(otherFolder / "wayland-proxy-1");
    other.tellProgram();
    EXPECT_EQ(bytesToProgram(), 0U);
}

}  // namespace

}  // namespace tarvik::tests
