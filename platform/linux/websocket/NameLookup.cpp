// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/NameLookup.h"

#include <netdb.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "base/Weakly.h"
#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using boost::asio::ip::tcp;
using Addresses = Result<std::vector<tcp::endpoint>>;

struct AddressListDeleter {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};

Addresses askSystem(const std::string& host, std::uint16_t port) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int status = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (status != 0) {
        const int code = status == EAI_SYSTEM ? errno : 0;
        const std::string reason =
            status == EAI_SYSTEM ? std::generic_category().message(code) : gai_strerror(status);
        return Error{code, "The host " + host + " was not found: " + reason};
    }
    const std::unique_ptr<addrinfo, AddressListDeleter> list(found);
    std::vector<tcp::endpoint> endpoints;
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
        tcp::endpoint endpoint;
        if (entry->ai_addrlen <= endpoint.capacity()) {
            std::memcpy(endpoint.data(), entry->ai_addr, entry->ai_addrlen);
            endpoint.resize(entry->ai_addrlen);
            endpoints.push_back(endpoint);
        }
    }
    return endpoints;
}

}  // namespace

void lookUpHost(SerialThread& thread, const std::string& host, std::uint16_t port,
                LookupHandler handler) {
    boost::system::error_code parseError;
    const auto address = boost::asio::ip::make_address(host, parseError);
    auto deliver =
        weakly(thread, [handler = std::move(handler)](SerialThread& receiver, Addresses addresses) {
            receiver.post([handler, addresses = std::move(addresses)] { handler(addresses); });
        });
    if (!parseError) {
        deliver(std::vector{tcp::endpoint(address, port)});
        return;
    }
    try {
        startThread("name-lookup", [deliver, host, port] {
            deliver(askSystem(host, port));
        }).detach();
    } catch (const std::system_error& error) {
        deliver(Error{error.code().value(), "No thread for looking up " + host});
    }
}

}  // namespace tarvik::linuxdesktop
