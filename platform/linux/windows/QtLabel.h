// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>
#include <QPointer>
#include <optional>
#include <string>
#include <vector>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A label that is measured and drawn as plain text: a wrapped label is exactly as high as its
/// lines. Its colour follows the desktop's theme. Main thread only.
class QtLabel final : public QLabel, public platform::Label {
  public:
    explicit QtLabel(const platform::LabelDescription& description);

    void setText(const std::string& text) override;
    void setTextColor(platform::Color color) override;

    /// Makes the label's text, also a later one, what a screen reader says about `control` after
    /// the control's name. The control may be destroyed first.
    void describe(QWidget& control);
    bool wraps() const { return wrapping_ != platform::LabelWrapping::none; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

    /// The colour in the present theme.
    QColor drawnColor() const;

  private:
    void paintEvent(QPaintEvent* event) override;
    int flags() const;
    QSize textSize(int width) const;

    platform::Color color_;
    platform::TextAlignment alignment_;
    platform::LabelWrapping wrapping_;
    std::optional<int> preferredWidth_;
    std::vector<QPointer<QWidget>> described_;
};

}  // namespace tarvik::linuxdesktop
