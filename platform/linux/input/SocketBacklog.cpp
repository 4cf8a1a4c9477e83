// SPDX-License-Identifier: MIT

#include "platform/linux/input/SocketBacklog.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

#include "platform/linux/loop/FileDescriptor.h"

namespace tarvik::linuxdesktop {

namespace {

using Inodes = std::set<std::uint32_t>;

// One connected local socket, as the system describes the socket.
struct Connection {
    std::string address;
    std::uint32_t inode = 0;
    std::uint32_t peer = 0;
    unix_diag_rqlen queues{};
};

// A server has the same address in the abstract namespace, with a null byte before the path, and in
// the file system.
std::string withoutNulls(std::string_view address) {
    const auto first = address.find_first_not_of('\0');
    const auto last = address.find_last_not_of('\0');
    return first == std::string_view::npos ? std::string()
                                           : std::string(address.substr(first, last - first + 1));
}

Inodes socketsOf(std::int32_t process) {
    constexpr std::string_view prefix = "socket:[";
    Inodes inodes;
    std::error_code error;
    const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/fd";
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code closed;
        const std::string link = std::filesystem::read_symlink(entry->path(), closed).string();
        std::uint32_t inode = 0;
        if (link.starts_with(prefix) &&
            std::from_chars(link.data() + prefix.size(), link.data() + link.size(), inode).ec ==
                std::errc()) {
            inodes.insert(inode);
        }
    }
    return inodes;
}

bool askForConnections(int socket) {
    constexpr std::uint32_t established = 1;
    struct {
        nlmsghdr head;
        unix_diag_req request;
    } message{};
    message.head.nlmsg_len = sizeof message;
    message.head.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.head.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.request.sdiag_family = AF_UNIX;
    message.request.udiag_states = 1U << established;
    message.request.udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_PEER | UDIAG_SHOW_RQLEN;
    return send(socket, &message, sizeof message, 0) == ssize_t{sizeof message};
}

std::size_t lengthOf(const nlmsghdr& head) {
    return head.nlmsg_len;
}

std::size_t lengthOf(const rtattr& head) {
    return head.rta_len;
}

template <typename Item>
Item itemAt(std::string_view bytes) {
    Item item{};
    std::memcpy(&item, bytes.data(), std::min(bytes.size(), sizeof item));
    return item;
}

// Takes the first record of a list, whose records begin with their length and are padded to four
// bytes. Empty at the end of the list.
template <typename Head>
std::string_view takeRecord(std::string_view& list) {
    constexpr std::size_t alignment = 4;
    const std::size_t length = list.size() < sizeof(Head) ? 0 : lengthOf(itemAt<Head>(list));
    if (length < sizeof(Head) || length > list.size()) {
        return {};
    }
    const std::string_view record = list.substr(0, length);
    list.remove_prefix(std::min(list.size(), (length + alignment - 1) / alignment * alignment));
    return record;
}

Connection connectionIn(std::string_view message) {
    message.remove_prefix(std::min(message.size(), sizeof(nlmsghdr)));
    Connection connection;
    connection.inode = itemAt<unix_diag_msg>(message).udiag_ino;
    message.remove_prefix(std::min(message.size(), sizeof(unix_diag_msg)));
    for (auto record = takeRecord<rtattr>(message); !record.empty();
         record = takeRecord<rtattr>(message)) {
        const std::string_view value = record.substr(sizeof(rtattr));
        switch (itemAt<rtattr>(record).rta_type) {
            case UNIX_DIAG_NAME:
                connection.address = withoutNulls(value);
                break;
            case UNIX_DIAG_PEER:
                connection.peer = itemAt<std::uint32_t>(value);
                break;
            case UNIX_DIAG_RQLEN:
                connection.queues = itemAt<unix_diag_rqlen>(value);
                break;
            default:
                break;
        }
    }
    return connection;
}

// A program may stand between itself and the server, by a thread that keeps what its main loop does
// not read. Firefox does so, with a socket beside the compositor's.
bool isProxy(const Connection& connection, const std::string& address, const Inodes& inodes) {
    return inodes.contains(connection.inode) &&
           std::filesystem::path(connection.address).parent_path() ==
               std::filesystem::path(address).parent_path();
}

}  // namespace

std::string addressOfServer(int descriptor) {
    sockaddr_un address{};
    socklen_t length = sizeof address;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        address.sun_family != AF_UNIX) {
        return {};
    }
    return withoutNulls({address.sun_path, length - offsetof(sockaddr_un, sun_path)});
}

// The server's end of each connection tells both directions. The program's end may be in a network
// namespace of its own, where this process cannot look it up.
std::optional<SocketBacklog> backlogOf(std::int32_t process, const std::string& address) {
    const Inodes inodes = socketsOf(process);
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (address.empty() || inodes.empty() || !socket || !askForConnections(socket.number())) {
        return std::nullopt;
    }
    std::optional<SocketBacklog> backlog;
    std::array<char, 32768> buffer;
    for (;;) {
        const auto length = recv(socket.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (length <= 0) {
            return std::nullopt;
        }
        std::string_view messages(buffer.data(), static_cast<std::size_t>(length));
        for (auto message = takeRecord<nlmsghdr>(messages); !message.empty();
             message = takeRecord<nlmsghdr>(messages)) {
            const auto type = itemAt<nlmsghdr>(message).nlmsg_type;
            if (type == NLMSG_DONE) {
                return backlog;
            }
            if (type == NLMSG_ERROR) {
                return std::nullopt;
            }
            const Connection connection = connectionIn(message);
            if (inodes.contains(connection.peer) &&
                (connection.address == address || isProxy(connection, address, inodes))) {
                backlog = backlog.value_or(SocketBacklog());
                backlog->toProgram += connection.queues.udiag_wqueue;
                backlog->toServer += connection.queues.udiag_rqueue;
            }
        }
    }
}

}  // namespace tarvik::linuxdesktop
