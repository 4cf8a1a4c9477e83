// SPDX-License-Identifier: MIT

#include "speech-service/ConnectionRegistry.h"

#include <algorithm>

namespace tarvik::service {

void ConnectionRegistry::add(const std::shared_ptr<OpenConnection>& connection) {
    removeClosed();
    connections_.push_back(connection);
}

std::size_t ConnectionRegistry::count() {
    removeClosed();
    return connections_.size();
}

std::size_t ConnectionRegistry::openCount() const {
    const auto isOpen = [](const std::weak_ptr<OpenConnection>& weakConnection) {
        const std::shared_ptr<OpenConnection> connection = weakConnection.lock();
        return connection && !connection->hasEnded();
    };
    return static_cast<std::size_t>(std::ranges::count_if(connections_, isOpen));
}

void ConnectionRegistry::goAway() {
    for (const std::weak_ptr<OpenConnection>& weakConnection : connections_) {
        if (const std::shared_ptr<OpenConnection> connection = weakConnection.lock()) {
            connection->goAway();
        }
    }
}

void ConnectionRegistry::removeClosed() {
    std::erase_if(connections_, [](const auto& connection) { return connection.expired(); });
}

}  // namespace tarvik::service
