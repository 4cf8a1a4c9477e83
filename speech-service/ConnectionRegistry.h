// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "speech-service/OpenConnection.h"

namespace tarvik::service {

/// The open connections, which the registry holds weakly. On the server's executor only.
class ConnectionRegistry {
  public:
    void add(const std::shared_ptr<OpenConnection>& connection);

    /// The number of connections, those that have ended included until their destruction.
    std::size_t count();

    /// The number of connections that have not ended.
    std::size_t openCount() const;

    /// Ends every open connection.
    void goAway();

  private:
    void removeClosed();

    std::vector<std::weak_ptr<OpenConnection>> connections_;
};

}  // namespace tarvik::service
