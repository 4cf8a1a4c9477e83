#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace tarvik::service {

/// A connection that can be told that the service ends.
class OpenConnection {
  public:
    virtual ~OpenConnection() = default;
    OpenConnection(const OpenConnection&) = delete;
    OpenConnection& operator=(const OpenConnection&) = delete;

    /// Ends the connection, politely where its state allows that.
    virtual void goAway() = 0;

  protected:
    OpenConnection() = default;
};

/// The connections that are open. On the server's executor only.
class StreamRegistry {
  public:
    void add(const std::shared_ptr<OpenConnection>& connection);

    /// How many are open.
    std::size_t count();

    /// Tells every open connection to go away.
    void goAway();

  private:
    void forgetClosed();

    std::vector<std::weak_ptr<OpenConnection>> connections_;
};

}  // namespace tarvik::service
