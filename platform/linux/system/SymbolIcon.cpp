#include "platform/linux/system/SymbolIcon.h"

#include <QFont>
#include <QGuiApplication>
#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <algorithm>
#include <functional>
#include <utility>

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
    QColor halo = color.lightnessF() < 0.5F ? Qt::white : Qt::black;
    halo.setAlphaF(0.85F);
    return halo;
}

QPainterPath microphonePath() {
    QPainterPath path;
    path.addRoundedRect(QRectF(8.5, 2, 7, 12), 3.5, 3.5);
    path.moveTo(5, 10.5);
    path.arcTo(QRectF(5, 4, 14, 14), 180, 180);
    path.moveTo(12, 18);
    path.lineTo(12, 22);
    path.moveTo(8, 22);
    path.lineTo(16, 22);
    return path;
}

void drawMicrophone(QPainter& painter, const QColor& color, bool isFilled) {
    QPen pen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    if (!isFilled) {
        painter.strokePath(microphonePath(),
                           QPen(haloColor(color), 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.strokePath(microphonePath(), pen);
    if (isFilled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawRoundedRect(QRectF(8.5, 2, 7, 12), 3.5, 3.5);
    }
}

void drawApplicationIcon(QPainter& painter) {
    QLinearGradient background(0, 0, 0, side);
    background.setColorAt(0, QColor(94, 92, 230));
    background.setColorAt(1, QColor(48, 46, 140));
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(QRectF(0, 0, side, side), 5.5, 5.5);
    painter.translate(side / 2, side / 2);
    painter.scale(0.7, 0.7);
    painter.translate(-side / 2, -side / 2);
    drawMicrophone(painter, Qt::white, true);
}

}  // namespace

QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color) {
    const bool isFilled = symbol == Symbol::filledMicrophone;
    return QIcon(new DrawnIconEngine(
        [isFilled](QPainter& painter, const QColor& drawn) {
            drawMicrophone(painter, drawn, isFilled);
        },
        color));
}

QIcon applicationIcon() {
    return QIcon(new DrawnIconEngine(
        [](QPainter& painter, const QColor&) { drawApplicationIcon(painter); }, std::nullopt));
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
