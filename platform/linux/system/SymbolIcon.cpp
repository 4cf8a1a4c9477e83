#include "platform/linux/system/SymbolIcon.h"

#include <QFont>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>
#include <algorithm>
#include <functional>
#include <utility>

#include "platform/linux/system/Pictures.h"

namespace tarvik::linuxdesktop {

namespace {

// Draws into a square of this side.
constexpr qreal side = 24;
using Drawing = std::function<void(QPainter&, const QColor&)>;

class DrawnIconEngine final : public QIconEngine {
  public:
    DrawnIconEngine(Drawing drawing, std::optional<QColor> color)
        : drawing_(std::move(drawing)), color_(std::move(color)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const qreal scale = std::min(rect.width(), rect.height()) / side;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(QRectF(rect).center());
        painter->scale(scale, scale);
        painter->translate(-side / 2, -side / 2);
        drawing_(*painter, color_.value_or(QGuiApplication::palette().color(QPalette::WindowText)));
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    // What panels use; the bus carries one picture for each.
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override {
        return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32), QSize(48, 48)};
    }

    QIconEngine* clone() const override { return new DrawnIconEngine(drawing_, color_); }

  private:
    Drawing drawing_;
    std::optional<QColor> color_;
};

// Around a thin symbol in the text colour, in case the panel has another background than windows
// have.
QColor haloColor(const QColor& color) {
    return color.lightnessF() < 0.5F ? Qt::white : Qt::black;
}

QByteArray inColor(QByteArray drawing, const QColor& color) {
    drawing.replace("#000000", color.name().toLatin1());
    drawing.replace("fuchsia", haloColor(color).name().toLatin1());
    return drawing;
}

}  // namespace

QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color) {
    const QByteArray drawing = symbolDrawing(
        symbol == Symbol::filledMicrophone ? QStringLiteral("mic.fill") : QStringLiteral("mic"));
    return QIcon(new DrawnIconEngine(
        [drawing](QPainter& painter, const QColor& drawn) {
            QSvgRenderer(inColor(drawing, drawn)).render(&painter, QRectF(0, 0, side, side));
        },
        color));
}

QIcon textIcon(const std::string& text, const std::optional<QColor>& color) {
    return QIcon(new DrawnIconEngine(
        [text = QString::fromStdString(text)](QPainter& painter, const QColor& drawn) {
            QFont font = QGuiApplication::font();
            font.setPixelSize(static_cast<int>(side));
            painter.setFont(font);
            painter.setPen(drawn);
            painter.drawText(QRectF(0, 0, side, side), Qt::AlignCenter, text);
        },
        color));
}

}  // namespace tarvik::linuxdesktop
