#pragma once

#include <QIcon>
#include <QSize>
#include <optional>
#include <string>

#include "platform/Appearance.h"
#include "platform/linux/windows/SymbolIcon.h"

namespace tarvik::linuxdesktop {

/// One of the symbols, or a picture with colours of its own. Main thread only.
class QtImage final : public platform::Image {
  public:
    QtImage(Symbol symbol, std::string accessibilityDescription);
    /// `naturalSize` is in points.
    QtImage(QIcon picture, QSize naturalSize);

    /// A symbol without a tint shows on a panel of any colour in any case.
    void setTemplate(bool) override {}

    /// A symbol is drawn in `color` or, without one, so that it shows on any ground.
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
