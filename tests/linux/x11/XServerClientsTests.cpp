// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "platform/linux/loop/FileDescriptor.h"
#include "platform/linux/x11/XServerClients.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::FileDescriptor;
using linuxdesktop::hasClients;

// The address of a display in the abstract namespace, which has no files.
class Address {
  public:
    explicit Address(const std::string& display) {
        const std::string name = "/tmp/.X11-unix/X" + display.substr(1);
        address_.sun_family = AF_UNIX;
        std::memcpy(address_.sun_path + 1, name.data(), name.size());
        size_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    }

    bool bindTo(const FileDescriptor& socket) const {
        return bind(socket.number(), reinterpret_cast<const sockaddr*>(&address_), size_) == 0 &&
               listen(socket.number(), 1) == 0;
    }
    bool connectTo(const FileDescriptor& socket) const {
        return connect(socket.number(), reinterpret_cast<const sockaddr*>(&address_), size_) == 0;
    }

  private:
    sockaddr_un address_{};
    socklen_t size_ = 0;
};

TEST(XServerClients, AreThereFromAConnectionToItsEnd) {
    const std::string display = ":" + std::to_string(100'000 + getpid());
    const Address address(display);
    const FileDescriptor server(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_TRUE(address.bindTo(server));
    EXPECT_FALSE(hasClients(display));
    {
        const FileDescriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_TRUE(address.connectTo(client));
        const FileDescriptor accepted(accept(server.number(), nullptr, nullptr));
        ASSERT_TRUE(accepted);
        EXPECT_TRUE(hasClients(display));
        EXPECT_TRUE(hasClients(display + ".0"));
        EXPECT_FALSE(hasClients(display + "1"));
    }
    EXPECT_FALSE(hasClients(display));
}

TEST(XServerClients, AreUnknownOfADisplayThatIsNotOfThisMachine) {
    EXPECT_FALSE(hasClients(""));
    EXPECT_FALSE(hasClients(":"));
    EXPECT_FALSE(hasClients("elsewhere:0"));
}

}  // namespace

}  // namespace tarvik::tests
