// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace tarvik::linuxdesktop {

struct PulseContextDeleter {
    void operator()(pa_context* context) const {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};

struct PulseOperationDeleter {
    void operator()(pa_operation* operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};

struct PulsePropertiesDeleter {
    void operator()(pa_proplist* properties) const { pa_proplist_free(properties); }
};

/// A connection. Dropping the handle closes the connection and ends its callbacks; needs the loop's
/// lock.
using PulseContext = std::unique_ptr<pa_context, PulseContextDeleter>;
/// A request to the server. Dropping the handle ends the request's callbacks; needs the loop's
/// lock.
using PulseOperation = std::unique_ptr<pa_operation, PulseOperationDeleter>;
using PulseProperties = std::unique_ptr<pa_proplist, PulsePropertiesDeleter>;

}  // namespace tarvik::linuxdesktop
