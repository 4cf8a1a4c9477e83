#pragma once

#include <functional>
#include <utility>

#include "network/TlsStream.h"
#include "platform/linux/websocket/FrameKinds.h"

namespace tarvik::linuxdesktop {

/// The TLS stream below a web socket: what is read passes FrameKinds.
///
/// Not final: Asio derives from whatever it asks whether it is an executor.
class FrameStream : public network::TlsStream {
  public:
    using TlsStream::TlsStream;

    FrameKinds& kinds() { return kinds_; }

    /// What is done when the web socket begins to end the connection below it.
    void setOnTeardown(std::function<void()> onTeardown) { onTeardown_ = std::move(onTeardown); }

  private:
    void onArrival(const Buffers& buffers, std::size_t size) override;
    void onTeardown() override { onTeardown_(); }

    std::function<void()> onTeardown_;
    FrameKinds kinds_;
};

}  // namespace tarvik::linuxdesktop
