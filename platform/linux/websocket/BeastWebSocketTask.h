// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "platform/WebSocket.h"
#include "platform/linux/websocket/BeastWebSocketSession.h"
#include "platform/linux/websocket/Connection.h"
#include "platform/linux/websocket/Connector.h"

namespace tarvik::linuxdesktop {

/// One connection of BeastWebSocketService. The public operations post to the session's thread.
/// Everything else happens on the session's thread.
///
/// The inbox keeps messages until receive() asks for them. A full inbox stops the reading, and
/// TCP's flow control then stops the service.
class BeastWebSocketTask final : public platform::WebSocketTask,
                                 public std::enable_shared_from_this<BeastWebSocketTask> {
  public:
    BeastWebSocketTask(std::shared_ptr<BeastWebSocketSession> session,
                       platform::UrlRequest request);

    void resume() override;
    void send(platform::WebSocketMessage message, SendHandler handler) override;
    void receive(ReceiveHandler handler) override;
    void cancel(int closeCode) override;

    /// Cancels the connecting and destroys all handlers without calling them. The session aborts
    /// the connection itself. On the session's thread.
    void drop();

  private:
    enum class State { created, connecting, open, ended };

    struct Outgoing {
        platform::WebSocketMessage message;
        SendHandler handler;
        std::chrono::steady_clock::time_point queueTime = std::chrono::steady_clock::now();
    };

    struct CloseFrame {
        int code = 0;
        std::string reason;
    };

    void resumeOnThread();
    void sendOnThread(Outgoing outgoing);
    void receiveOnThread(ReceiveHandler handler);
    void cancelOnThread(int closeCode);
    void onConnected(Result<Connector::Connected> result);
    void sendNext();
    void onSent(const std::optional<Error>& error);
    void reportBacklog();
    void reportEndOfBacklog(const std::string& line);
    void readNext();
    void onRead(Result<Connection::Received> result);
    void deliver(platform::WebSocketMessage message);
    void onCloseFrame(CloseFrame frame);
    void postDeliverClose();
    void deliverClose();
    void end(const Error& error);

    const std::shared_ptr<BeastWebSocketSession> session_;
    const platform::UrlRequest request_;

    State state_ = State::created;
    Error endError_;
    std::shared_ptr<Connector> connector_;
    std::shared_ptr<Connection> connection_;

    /// The connection writes the first element while isSending_.
    std::deque<Outgoing> outgoing_;
    bool isSending_ = false;
    /// Whether the log says that messages wait too long.
    bool isBacklogReported_ = false;

    std::deque<platform::WebSocketMessage> inbox_;
    std::size_t inboxBytes_ = 0;
    std::deque<ReceiveHandler> receiveHandlers_;
    bool isReading_ = false;
    std::optional<CloseFrame> closeFrame_;
    /// Whether a receive has taken a message from the inbox since deliverClose() last looked.
    bool isInboxDraining_ = false;
};

}  // namespace tarvik::linuxdesktop
