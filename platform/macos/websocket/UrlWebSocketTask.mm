// SPDX-License-Identifier: MIT

#import "platform/macos/websocket/UrlWebSocketTask.h"

#include <utility>

#include "platform/macos/Conversions.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

using platform::WebSocketMessage;

NSURLSessionWebSocketMessage* urlMessage(const WebSocketMessage& message) {
    if (message.kind == WebSocketMessage::Kind::string) {
        return [[NSURLSessionWebSocketMessage alloc] initWithString:nsString(message.bytes)];
    }
    return [[NSURLSessionWebSocketMessage alloc] initWithData:nsData(message.bytes)];
}

WebSocketMessage messageFrom(NSURLSessionWebSocketMessage* message) {
    const WebSocketMessage::Kind kind = messageKind(message.type);
    return {kind,
            kind == WebSocketMessage::Kind::string ? utf8(message.string) : bytes(message.data)};
}

}  // namespace

void UrlWebSocketTask::resume() {
    if (canOpen_) {
        [task_ resume];
    } else {
        [task_ cancel];
    }
}

void UrlWebSocketTask::send(WebSocketMessage message, SendHandler handler) {
    [task_ sendMessage:urlMessage(message)
        completionHandler:^(NSError* error) {
          handler(error != nil ? std::optional(errorFrom(error)) : std::nullopt);
        }];
}

void UrlWebSocketTask::receive(ReceiveHandler handler) {
    waiting_->store(std::move(handler));
    const std::shared_ptr<WaitingReceive> waiting = waiting_;
    [task_ receiveMessageWithCompletionHandler:^(NSURLSessionWebSocketMessage* message,
                                                 NSError* error) {
      const ReceiveHandler answer = waiting->take();
      if (!answer) {
          return;
      }
      if (message != nil) {
          answer(messageFrom(message));
      } else {
          answer(errorFrom(error));
      }
    }];
}

void UrlWebSocketTask::didEnd(NSError* error) {
    if (const ReceiveHandler answer = waiting_->take()) {
        answer(error != nil ? errorFrom(error) : Error{0, "the connection has ended"});
    }
}

void UrlWebSocketTask::cancel(int closeCode) {
    [task_ cancelWithCloseCode:static_cast<NSURLSessionWebSocketCloseCode>(closeCode) reason:nil];
}

}  // namespace tarvik::macdesktop
