// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/Appearance.h"

namespace tarvik::simulated {

/// A picture that consists of its name.
class SimulatedImage final : public platform::Image {
  public:
    explicit SimulatedImage(std::string imageName, std::string text = {})
        : name(std::move(imageName)), description(std::move(text)) {}
    void setTemplate(bool isTemplateNow) override { isTemplate = isTemplateNow; }

    const std::string name;
    const std::string description;
    std::optional<bool> isTemplate;
};

}  // namespace tarvik::simulated
