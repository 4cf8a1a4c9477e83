// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"

namespace tarvik::macdesktop {

/// The main NSBundle.
class MainBundle final : public platform::Bundle {
  public:
    std::optional<std::string> objectForInfoDictionaryKey(std::string_view key) const override;
    std::string bundlePath() const override;
    std::string openCommand() const override;
};

}  // namespace tarvik::macdesktop
