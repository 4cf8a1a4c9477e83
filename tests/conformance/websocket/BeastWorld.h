// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/linux/websocket/BeastWebSocketService.h"
#include "tests/conformance/websocket/WebSocketWorld.h"
#include "tests/linux/websocket/Certificates.h"
#include "tests/linux/websocket/Listener.h"

namespace tarvik::tests {

/// The real service and a server in this process. The server runs on the main thread.
class BeastWorld final : public WebSocketWorld {
  public:
    static constexpr std::chrono::milliseconds closeTimeout{300};

    explicit BeastWorld(const TestCertificate& certificate = {"DNS:localhost,IP:127.0.0.1,IP:::1"});

    platform::WebSocketService& service() override { return *service_; }
    platform::UrlRequest request() override;
    bool runUntil(const std::function<bool()>& condition) override;
    void settle() override;
    Seconds now() override;
    Seconds delegateHoldTime() override;
    void accept(const std::string& protocol) override;
    void sendText(const std::string& text) override;
    void sendData(const std::string& bytes) override;
    void sendClose(int code, const std::string& reason) override;
    void lose() override;
    platform::WebSocketMessage nextMessage() override;

    /// Accepts a connection and does the TLS handshake. False when the client ends the handshake.
    bool acceptTls();
    Listener& listener() { return listener_; }
    SSL_CTX* serverContext() { return serverContext_.get(); }
    Peer& peer() { return *peer_; }
    /// The request header of the last accepted connection.
    const std::string& head() const { return head_; }
    std::vector<std::string> logLines() const;

    /// Replaces the service by a new one, which reads the environment again. The service trusts
    /// the certificates in the file `authority` as well, unless `authority` is empty.
    void restartService(const std::string& authority = {});
    /// What the services reported of the key so far.
    std::vector<bool> keyAnswers() const;
    void endService() { service_.reset(); }

  private:
    class MemoryLog final : public platform::Log {
      public:
        void write(std::string_view line) override;
        std::vector<std::string> lines() const;

      private:
        mutable std::mutex mutex_;
        std::vector<std::string> lines_;
    };

    SslContext serverContext_;
    Listener listener_{"127.0.0.1"};
    std::optional<Peer> peer_;
    std::string head_;
    MemoryLog log_;
    mutable std::mutex keyAnswersMutex_;
    std::vector<bool> keyAnswers_;
    std::unique_ptr<linuxdesktop::BeastWebSocketService> service_;
};

}  // namespace tarvik::tests
