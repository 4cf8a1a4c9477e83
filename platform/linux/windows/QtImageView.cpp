// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtImageView.h"

#include <QPainter>

#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

QtImageView::QtImageView(const platform::ImageViewDescription& description)
    : image_(std::dynamic_pointer_cast<QtImage>(description.image)), scaling_(description.scaling) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    applyLayout(*this, description.layout);
}

QSize QtImageView::sizeHint() const {
    return image_ ? image_->naturalSize() : QSize(0, 0);
}

void QtImageView::paintEvent(QPaintEvent*) {
    if (!image_) {
        return;
    }
    QSize size = image_->naturalSize();
    if (scaling_ == platform::ImageScaling::proportionallyUpOrDown || size.width() > width() ||
        size.height() > height()) {
        size.scale(this->size(), Qt::KeepAspectRatio);
    }
    QRect target(QPoint(), size);
    target.moveCenter(rect().center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(target, image_->icon({}).pixmap(size, devicePixelRatioF()));
}

}  // namespace tarvik::linuxdesktop
