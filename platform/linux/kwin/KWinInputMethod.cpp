// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/KWinInputMethod.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "base/Text.h"

namespace tarvik::linuxdesktop {

namespace {

// A message holds 4096 bytes at the most, and a character four.
constexpr std::size_t maxCommitLength = 900;

}  // namespace

KWinInputMethod::KWinInputMethod(std::unique_ptr<WaylandConnection> connection, EventLoop& loop,
                                 std::function<void()> onChange, std::function<void()> onLost)
    : connection_(std::move(connection)), onChange_(std::move(onChange)) {
    connection_->attach(
        loop, [this] { bind(); }, [onLost = std::move(onLost)](const std::string&) { onLost(); });
}

void KWinInputMethod::bind() {
    static constexpr zwp_input_method_v1_listener listener{
        [](void* self, zwp_input_method_v1*, zwp_input_method_context_v1* context) {
            static_cast<KWinInputMethod*>(self)->setContext(context);
        },
        [](void* self, zwp_input_method_v1*, zwp_input_method_context_v1* context) {
            auto& method = *static_cast<KWinInputMethod*>(self);
            if (method.context_.get() == context) {
                method.setContext(nullptr);
            }
        }};
    if (connection_->offers(zwp_input_method_v1_interface)) {
        method_.reset(connection_->bind<zwp_input_method_v1>(zwp_input_method_v1_interface, 1));
        zwp_input_method_v1_add_listener(method_.get(), &listener, this);
    }
}

void KWinInputMethod::setContext(zwp_input_method_context_v1* context) {
    static constexpr zwp_input_method_context_v1_listener listener{
        [](void*, zwp_input_method_context_v1*, const char*, std::uint32_t, std::uint32_t) {},
        [](void*, zwp_input_method_context_v1*) {},
        [](void*, zwp_input_method_context_v1*, std::uint32_t, std::uint32_t) {},
        [](void*, zwp_input_method_context_v1*, std::uint32_t, std::uint32_t) {},
        [](void* self, zwp_input_method_context_v1*, std::uint32_t serial) {
            static_cast<KWinInputMethod*>(self)->serial_ = serial;
        },
        [](void*, zwp_input_method_context_v1*, const char*) {}};
    context_.reset(context);
    serial_ = 0;
    if (context != nullptr) {
        zwp_input_method_context_v1_add_listener(context, &listener, this);
    }
    onChange_();
}

void KWinInputMethod::commit(std::u32string_view text) {
    while (context_ && !text.empty()) {
        const std::size_t length = std::min(text.size(), maxCommitLength);
        const std::string encoded = utf8FromUtf32(text.substr(0, length));
        zwp_input_method_context_v1_commit_string(context_.get(), serial_, encoded.c_str());
        text.remove_prefix(length);
    }
}

}  // namespace tarvik::linuxdesktop
