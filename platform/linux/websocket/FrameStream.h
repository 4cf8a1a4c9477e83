// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <utility>

#include "network/TlsStream.h"
#include "platform/linux/websocket/FrameKinds.h"

namespace tarvik::linuxdesktop {

/// The TLS stream below a web socket. All bytes that are read pass through FrameKinds.
///
/// Not final, because Asio's check for executors derives from the checked type.
class FrameStream : public network::TlsStream {
  public:
    using TlsStream::TlsStream;

    FrameKinds& kinds() { return kinds_; }

    /// `onTeardown` is called when the web socket starts to close the connection below it. Must be
    /// set before the first read.
    void setOnTeardown(std::function<void()> onTeardown) { onTeardown_ = std::move(onTeardown); }

  private:
    void onRead(const Buffers& buffers, std::size_t size) override;
    void onTeardown() override { onTeardown_(); }

    std::function<void()> onTeardown_;
    FrameKinds kinds_;
};

}  // namespace tarvik::linuxdesktop
