// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// Sends a call and handles its reply.
using SendQuery = std::function<void(BusMessage, MessageBus::OnReply)>;

/// Passes the calls to `send` that ask a widget for what is not known of it yet: whether its text
/// can be changed, its role and its parent. The replies fill `element`. The bus's thread.
void queryElement(MessageBus& bus, const std::shared_ptr<AtspiElement>& element,
                  const SendQuery& send);
/// Adds those calls to `queries`.
void queryElement(MessageBus& bus, const std::shared_ptr<AtspiElement>& element,
                  CallBatch& queries);

}  // namespace tarvik::linuxdesktop
