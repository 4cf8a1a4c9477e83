// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik {

/// The two calls to action, named after the total dictation time at which they are due.
enum class CTATier { tenMinute, sixtyMinute };

}  // namespace tarvik
