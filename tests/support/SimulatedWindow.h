// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Window.h"
#include "tests/support/Journal.h"
#include "tests/support/SimulatedTime.h"
#include "tests/support/SimulatedViews.h"

namespace tarvik::simulated {

/// A window on a virtual screen. The frame has the size of the content.
class SimulatedWindow final : public platform::Window {
  public:
    SimulatedWindow(platform::WindowDescription description, std::optional<platform::Rect> screen,
                    SimulatedTime& time, Journal& journal);

    void setContent(std::shared_ptr<platform::View> root,
                    std::optional<platform::RgbColor> contentBackground) override;
    platform::Rect frame() const override { return frame_; }
    void setFrameOrigin(platform::Point origin) override;
    void center() override;
    void show() override;
    void orderFrontRegardless() override;
    bool isVisible() const override { return isVisible_; }
    /// Acts like the window's close button.
    void close() override;

    /// The control with this title, or the text field with this accessibility label. Throws when
    /// there is not exactly one.
    std::shared_ptr<SimulatedButton> button(const std::string& title) const;
    std::vector<std::shared_ptr<SimulatedButton>> buttons(const std::string& title) const;
    std::shared_ptr<SimulatedTextField> field(const std::string& accessibilityLabel) const;
    std::shared_ptr<SimulatedCheckbox> checkbox() const;
    /// The texts of all labels, from top to bottom.
    std::vector<std::string> texts() const;
    /// The label with this text; empty when there is none.
    std::shared_ptr<SimulatedLabel> label(const std::string& text) const;

    const platform::WindowDescription look;
    std::shared_ptr<SimulatedView> content;
    std::optional<platform::RgbColor> background;
    /// The times at which the window was brought to the front.
    std::vector<TimePoint> frontTimes;

  private:
    template <typename View>
    std::vector<std::shared_ptr<View>> all() const;

    SimulatedTime& time_;
    Journal& journal_;
    std::optional<platform::Rect> screen_;
    platform::Rect frame_;
    bool isVisible_ = false;
};

}  // namespace tarvik::simulated
