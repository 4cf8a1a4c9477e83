#include "speech-service/StreamRegistry.h"

namespace tarvik::service {

void StreamRegistry::add(const std::shared_ptr<OpenConnection>& connection) {
    forgetClosed();
    connections_.push_back(connection);
}

std::size_t StreamRegistry::count() {
    forgetClosed();
    return connections_.size();
}

void StreamRegistry::goAway() {
    for (const std::weak_ptr<OpenConnection>& weakConnection : connections_) {
        if (const std::shared_ptr<OpenConnection> connection = weakConnection.lock()) {
            connection->goAway();
        }
    }
}

void StreamRegistry::forgetClosed() {
    std::erase_if(connections_, [](const auto& connection) { return connection.expired(); });
}

}  // namespace tarvik::service
