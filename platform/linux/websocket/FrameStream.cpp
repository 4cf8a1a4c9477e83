// SPDX-License-Identifier: MIT

#include "platform/linux/websocket/FrameStream.h"

#include <boost/beast/core/buffers_prefix.hpp>
#include <boost/beast/core/buffers_range.hpp>

namespace tarvik::linuxdesktop {

void FrameStream::onRead(const Buffers& buffers, std::size_t size) {
    const auto arrived = boost::beast::buffers_prefix(size, buffers);
    for (const auto buffer : boost::beast::buffers_range_ref(arrived)) {
        kinds_.process({static_cast<unsigned char*>(buffer.data()), buffer.size()});
    }
}

}  // namespace tarvik::linuxdesktop
