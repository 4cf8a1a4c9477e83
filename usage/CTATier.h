#pragma once

namespace tarvik {

/// The call to action that is due after so much dictation.
enum class CTATier { tenMinute, sixtyMinute };

}  // namespace tarvik
