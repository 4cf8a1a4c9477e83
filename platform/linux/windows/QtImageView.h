// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>
#include <memory>

#include "platform/Views.h"
#include "platform/linux/windows/QtImage.h"

namespace tarvik::linuxdesktop {

/// A view of an image at the resolution of its screen. Main thread only.
class QtImageView final : public QWidget, public platform::View {
  public:
    explicit QtImageView(const platform::ImageViewDescription& description);

    QSize sizeHint() const override;

  private:
    void paintEvent(QPaintEvent* event) override;

    std::shared_ptr<QtImage> image_;
    platform::ImageScaling scaling_;
};

}  // namespace tarvik::linuxdesktop
