#include "platform/linux/system/QtImageView.h"

#include <QPainter>
#include <algorithm>

#include "platform/linux/system/Points.h"
#include "platform/linux/system/ViewGeometry.h"

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
    QRect place(QPoint(), size);
    place.moveCenter(rect().center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(place, image_->icon({}).pixmap(size, devicePixelRatioF()));
}

QtSeparator::QtSeparator() {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(std::max(1, pixels(1)));
}

void QtSeparator::paintEvent(QPaintEvent*) {
    constexpr float faint = 0.2F;
    QColor color = palette().color(QPalette::WindowText);
    color.setAlphaF(faint);
    QPainter(this).fillRect(rect(), color);
}

QtSpacer::QtSpacer(const platform::ViewLayout& layout) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    applyLayout(*this, layout);
}

}  // namespace tarvik::linuxdesktop
