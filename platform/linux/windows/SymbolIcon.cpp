// SPDX-License-Identifier: MIT

#include "platform/linux/windows/SymbolIcon.h"

#include <QFont>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>
#include <functional>
#include <utility>

#include "platform/linux/windows/Assets.h"

namespace tarvik::linuxdesktop {

namespace {

// Draws into a square with this side.
using Drawing = std::function<void(QPainter&)>;
constexpr qreal side = 24;

class DrawnIconEngine final : public QIconEngine {
  public:
    explicit DrawnIconEngine(Drawing drawing) : drawing_(std::move(drawing)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal scale = std::min(rect.width(), rect.height()) / side;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center());
        painter->scale(scale, scale);
        painter->translate(-side / 2, -side / 2);
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

    // The sizes that panels use. The bus carries one picture for each size.
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32), QSize(48, 48)};
    }

    QIconEngine* clone() const override { return new DrawnIconEngine(drawing_); }

  private:
    Drawing drawing_;
};

// The drawings are white where they take a colour.
QByteArray inColor(QByteArray drawing, const QColor& color) {
    return drawing.replace("#ffffff", color.name().toLatin1());
}

}  // namespace

QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color) {
    const QByteArray drawing =
        inColor(symbolDrawing(symbol == Symbol::filledMicrophone ? QStringLiteral("mic.fill")
                                                                 : QStringLiteral("mic")),
                color.value_or(Qt::white));
    return QIcon(new DrawnIconEngine([drawing](QPainter& painter) {
        QSvgRenderer(drawing).render(&painter, QRectF(0, 0, side, side));
    }));
}

QIcon textIcon(const std::string& text, const std::optional<QColor>& color) {
    return QIcon(
        new DrawnIconEngine([text = QString::fromStdString(text), color](QPainter& painter) {
            QFont font = QGuiApplication::font();
            font.setPixelSize(static_cast<int>(side));
            QPainterPath shape;
            shape.addText(0, 0, font, text);
            shape.translate(QPointF(side / 2, side / 2) - shape.boundingRect().center());
            if (!color) {
                painter.strokePath(shape,
                                   QPen(Qt::black, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            }
            painter.fillPath(shape, color.value_or(Qt::white));
        }));
}

}  // namespace tarvik::linuxdesktop
