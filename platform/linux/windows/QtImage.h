// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>
#include <QSize>
#include <optional>
#include <string>

#include "platform/Appearance.h"
#include "platform/linux/windows/SymbolIcon.h"

namespace tarvik::linuxdesktop {

/// An image: a symbol in one colour, or a picture with colours of its own. Main thread only.
class QtImage final : public platform::Image {
  public:
    QtImage(Symbol symbol, std::string accessibilityDescription);
    /// `naturalSize` is in points.
    QtImage(QIcon picture, QSize naturalSize);

    /// Has no effect: a symbol without a tint is visible on a panel of any colour.
    void setTemplate(bool) override {}

    /// The image as an icon. A symbol is drawn in `color` or, without a colour, so that it is
    /// visible on any background.
    QIcon icon(const std::optional<QColor>& color) const;
    /// In device-independent pixels.
    QSize naturalSize() const;
    const std::string& accessibilityDescription() const { return accessibilityDescription_; }

  private:
    std::optional<Symbol> symbol_;
    std::string accessibilityDescription_;
    QIcon picture_;
    QSize naturalSize_;
};

}  // namespace tarvik::linuxdesktop
