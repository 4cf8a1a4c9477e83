// SPDX-License-Identifier: MIT
#pragma once

#include <QPushButton>
#include <optional>
#include <string>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A button in the desktop's style, with its own colours where some are set. A button without a
/// border looks like a link. Space and Return press the focused button. Main thread only.
class QtButton final : public QPushButton, public platform::Button {
  public:
    explicit QtButton(const platform::ButtonDescription& description);

    std::string title() const override { return title_; }
    void setAttributedTitle(const platform::AttributedTitle& title) override;
    void setBezelColor(platform::Color color) override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  private:
    void paintEvent(QPaintEvent* event) override;
    void paintRing(QPainter& painter, double width) const;
    void paintBezel(QPainter& painter, const QColor& color) const;

    std::string title_;
    bool isLarge_;
    std::optional<platform::Color> titleColor_;
    std::optional<platform::Color> bezelColor_;
};

}  // namespace tarvik::linuxdesktop
