// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/Result.h"

namespace tarvik::platform {

/// The close code of an endpoint that is going away (RFC 6455, 7.4.1).
inline constexpr int closeCodeGoingAway = 1001;

/// The maximum size of a received message, in bytes. A larger message reaches no receive.
inline constexpr std::size_t maxReceivedMessageSize = std::size_t{1} << 20;

/// A request that opens a web socket.
struct UrlRequest {
    /// An absolute wss URL, percent-encoded.
    std::string url;
    /// Always 0: the caching policy of the protocol.
    int cachePolicy = 0;
    /// The timeout of the opening handshake, in seconds.
    double timeoutInterval = 60.0;
    /// Header fields to add to those of the handshake, with their values unchanged. A value with a
    /// line break or another control character makes the opening fail.
    std::vector<std::pair<std::string, std::string>> headerFields;
};

/// One whole message.
struct WebSocketMessage {
    enum class Kind { data, string, other };
    Kind kind = Kind::data;
    /// The payload. It is UTF-8 when the kind is `string`.
    std::string bytes;
};

/// One connection. Its operations may be called on any thread and never block.
///
/// Each handler is called at most once, on the session's serial queue, never inside the call that
/// takes the handler. A handler that still waits when the connection ends gets an error.
class WebSocketTask {
  public:
    using SendHandler = std::function<void(std::optional<Error>)>;
    using ReceiveHandler = std::function<void(Result<WebSocketMessage>)>;

    virtual ~WebSocketTask() = default;

    /// Starts the opening handshake. Called once.
    virtual void resume() = 0;
    /// Sends one message after all earlier ones. The handler is called when the bytes were handed
    /// to the network, or with an error. Messages wait until the connection is open.
    virtual void send(WebSocketMessage message, SendHandler handler) = 0;
    /// Passes the next message, or the error that ended the connection, to the handler. Messages
    /// are kept until a receive takes them. At most one receive waits at a time.
    virtual void receive(ReceiveHandler handler) = 0;
    /// Ends the connection, with a close frame when the connection is open. A waiting receive gets
    /// an error. Allowed in any state, any number of times.
    virtual void cancel(int closeCode) = 0;
};

/// Receives the events of a session, on the session's serial queue.
class WebSocketSessionDelegate {
  public:
    virtual ~WebSocketSessionDelegate() = default;

    /// The handshake succeeded. `protocol` is the subprotocol that the service chose, or empty.
    virtual void didOpen(WebSocketTask& task, const std::string& protocol) = 0;
    /// The service sent a close frame. Called at most once, after every earlier message was passed
    /// to a waiting receive. Not called for a connection that was lost, refused or cancelled.
    virtual void didClose(WebSocketTask& task, int closeCode, const std::string& reason) = 0;
};

/// Makes one connection. Calls the delegate and all handlers on its own serial queue, which is not
/// the main thread.
///
/// The session holds its delegate weakly until a connection is made. From then until 10 s after the
/// end of the connection the session holds its delegate strongly. That is longer than any deadline
/// that a delegate sets.
class WebSocketSession {
  public:
    virtual ~WebSocketSession() = default;

    /// Makes a connection for `request`. Nothing is sent before resume(). Main thread.
    virtual std::shared_ptr<WebSocketTask> webSocketTask(const UrlRequest& request) = 0;
};

/// Makes sessions. Main thread only; never blocks.
class WebSocketService {
  public:
    virtual ~WebSocketService() = default;

    virtual std::shared_ptr<WebSocketSession> makeSession(
        std::shared_ptr<WebSocketSessionDelegate> delegate) = 0;
};

}  // namespace tarvik::platform
