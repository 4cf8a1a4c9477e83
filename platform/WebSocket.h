#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Error.h"
#include "base/Result.h"

namespace tarvik::platform {

/// The close code of an end that goes away by its own decision (RFC 6455, 7.4.1).
inline constexpr int closeCodeGoingAway = 1001;

/// A request that opens a web socket.
struct UrlRequest {
    /// An absolute wss URL, percent-encoded.
    std::string url;
    /// 0: the protocol's own policy; no other is used.
    int cachePolicy = 0;
    /// How long, in seconds, the opening may take before it fails.
    double timeoutInterval = 60.0;
    /// Header fields beside those of the handshake itself, with their values as they are. A value
    /// that cannot stand in a header (it has a line break or another control character) fails the
    /// opening.
    std::vector<std::pair<std::string, std::string>> headerFields;
};

/// One whole message.
struct WebSocketMessage {
    enum class Kind { data, string, other };
    Kind kind = Kind::data;
    /// The payload; UTF-8 when the kind is string.
    std::string bytes;
};

/// One connection. Its operations may be called on any thread and never block.
///
/// Handlers run on the session's serial queue, never inside the call that was given them, each at
/// most once; those still waiting when the connection ends get an error.
class WebSocketTask {
  public:
    using SendHandler = std::function<void(std::optional<Error>)>;
    using ReceiveHandler = std::function<void(Result<WebSocketMessage>)>;

    virtual ~WebSocketTask() = default;

    /// Starts the opening. Once.
    virtual void resume() = 0;
    /// Sends one message after those given before; the handler comes once the bytes have left for
    /// the network or cannot any more. Messages given before the opening wait for it.
    virtual void send(WebSocketMessage message, SendHandler handler) = 0;
    /// Yields the next message, or the error that ended the connection. Messages are kept until
    /// they are asked for. At most one receive waits at a time.
    virtual void receive(ReceiveHandler handler) = 0;
    /// Sends a close frame where the connection is open and gives the connection up; a receive that
    /// waits gets an error. Any number of times, in any state.
    virtual void cancel(int closeCode) = 0;
};

/// What a session tells its delegate, on the session's serial queue.
class WebSocketSessionDelegate {
  public:
    virtual ~WebSocketSessionDelegate() = default;

    /// The handshake succeeded; `protocol` is the subprotocol that the service chose, or empty.
    virtual void didOpen(WebSocketTask& task, const std::string& protocol) = 0;
    /// The service sent a close frame (at most once, after every message that came before it was
    /// handed to a receive that waited for it). A connection that is lost, refused or cancelled
    /// brings no such notification.
    virtual void didClose(WebSocketTask& task, int closeCode, const std::string& reason) = 0;
};

/// Makes one connection and calls its delegate and its handlers on a serial queue of its own, which
/// is not the main thread.
///
/// The session holds its delegate weakly until a connection is made, and strongly from then until
/// 10 s after the connection has ended, which is longer than any deadline that a delegate sets
/// itself.
class WebSocketSession {
  public:
    virtual ~WebSocketSession() = default;

    /// A connection for `request`; nothing is sent before it is resumed. Main thread.
    virtual std::shared_ptr<WebSocketTask> webSocketTask(const UrlRequest& request) = 0;
};

/// Makes sessions. Main thread only; returns at once.
class WebSocketService {
  public:
    virtual ~WebSocketService() = default;

    virtual std::shared_ptr<WebSocketSession> makeSession(
        std::shared_ptr<WebSocketSessionDelegate> delegate) = 0;
};

}  // namespace tarvik::platform
