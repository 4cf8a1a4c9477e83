// SPDX-License-Identifier: MIT

#include "platform/linux/windows/DrawnIcon.h"

#include <QIconEngine>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

using Drawing = std::function<void(QPainter&)>;

class DrawnIconEngine final : public QIconEngine {
  public:
    DrawnIconEngine(QSize extent, QList<QSize> sizes, Drawing drawing)
        : extent_(extent), sizes_(std::move(sizes)), drawing_(std::move(drawing)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const QSizeF extent(extent_);
        const qreal scale =
            std::min(rect.width() / extent.width(), rect.height() / extent.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center());
        painter->scale(scale, scale);
        painter->translate(-extent.width() / 2, -extent.height() / 2);
        drawing_(*painter);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return sizes_; }

    QIconEngine* clone() const override { return new DrawnIconEngine(extent_, sizes_, drawing_); }

  private:
    QSize extent_;
    QList<QSize> sizes_;
    Drawing drawing_;
};

}  // namespace

QIcon drawnIcon(QSize extent, QList<QSize> sizes, Drawing drawing) {
    return QIcon(new DrawnIconEngine(extent, std::move(sizes), std::move(drawing)));
}

QIcon svgIcon(const QByteArray& drawing, QList<QSize> sizes) {
    const QSize extent = QSvgRenderer(drawing).defaultSize();
    return drawnIcon(extent, std::move(sizes), [extent, drawing](QPainter& painter) {
        QSvgRenderer(drawing).render(&painter, QRectF(QPointF(), extent));
    });
}

}  // namespace tarvik::linuxdesktop
