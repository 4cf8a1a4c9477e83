#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "platform/WebSocket.h"
#include "platform/linux/websocket/BeastWebSocketSession.h"
#include "platform/linux/websocket/Connection.h"
#include "platform/linux/websocket/Opening.h"

namespace tarvik::linuxdesktop {

/// One connection of BeastWebSocketService. Its operations go to the session's thread; everything
/// below lives there.
///
/// Messages that nobody asks for stay here up to a limit; beyond it nothing more is read, so the
/// service has to wait.
class BeastWebSocketTask final : public platform::WebSocketTask,
                                 public std::enable_shared_from_this<BeastWebSocketTask> {
  public:
    BeastWebSocketTask(std::shared_ptr<BeastWebSocketSession> session,
                       platform::UrlRequest request);

    void resume() override;
    void send(platform::WebSocketMessage message, SendHandler handler) override;
    void receive(ReceiveHandler handler) override;
    void cancel(int closeCode) override;

    /// Forgets all handlers; the session cuts the connection. On the session's thread.
    void drop();

  private:
    enum class State { created, opening, open, ended };

    struct Outgoing {
        platform::WebSocketMessage message;
        SendHandler handler;
    };

    struct CloseFrame {
        int code = 0;
        std::string reason;
    };

    void open();
    void onOpening(Result<Opening::Opened> result);
    void queue(Outgoing outgoing);
    void writeNext();
    void onWritten(const std::optional<Error>& error);
    void serve(ReceiveHandler handler);
    void readNext();
    void onRead(Result<platform::WebSocketMessage> result);
    void keepOrDeliver(platform::WebSocketMessage message);
    void onCloseFrame(CloseFrame frame);
    void postClose();
    void deliverClose();
    void giveUp(int closeCode);
    void end(const Error& error);

    const std::shared_ptr<BeastWebSocketSession> session_;
    const platform::UrlRequest request_;

    State state_ = State::created;
    Error endError_;
    std::shared_ptr<Opening> opening_;
    std::shared_ptr<Connection> connection_;

    /// The first one is being written while isWriting_.
    std::deque<Outgoing> outgoing_;
    bool isWriting_ = false;

    std::deque<platform::WebSocketMessage> inbox_;
    std::size_t inboxBytes_ = 0;
    std::deque<ReceiveHandler> receivers_;
    bool isReading_ = false;
    std::optional<CloseFrame> closeFrame_;
    /// Whether a kept message was asked for since the close was last held back.
    bool wasAsked_ = false;
};

}  // namespace tarvik::linuxdesktop
