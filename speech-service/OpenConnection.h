// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::service {

/// A connection that the server can end.
class OpenConnection {
  public:
    virtual ~OpenConnection() = default;
    OpenConnection(const OpenConnection&) = delete;
    OpenConnection& operator=(const OpenConnection&) = delete;

    /// Ends the connection because the server stops, with a close handshake if a stream is open.
    virtual void goAway() = 0;

    /// True once the client is gone. What the connection holds may be in use for a while longer.
    virtual bool hasEnded() const { return false; }

  protected:
    OpenConnection() = default;
};

}  // namespace tarvik::service
