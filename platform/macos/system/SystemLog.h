// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Log.h"

namespace tarvik::macdesktop {

/// The system's log, by NSLog.
class SystemLog final : public platform::Log {
  public:
    void write(std::string_view line) override;
};

}  // namespace tarvik::macdesktop
