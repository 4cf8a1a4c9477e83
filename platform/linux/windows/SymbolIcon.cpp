// SPDX-License-Identifier: MIT

#include "platform/linux/windows/SymbolIcon.h"

#include <QFont>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include "platform/linux/windows/Assets.h"
#include "platform/linux/windows/DrawnIcon.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr int side = 24;

// The sizes that panels use. The bus carries one picture for each size.
QList<QSize> panelSizes() {
    return {QSize(16, 16), QSize(22, 22), QSize(24, 24), QSize(32, 32), QSize(48, 48)};
}

// The drawings are white where they take a colour.
QByteArray inColor(QByteArray drawing, const QColor& color) {
    return drawing.replace("#ffffff", color.name().toLatin1());
}

}  // namespace

QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color) {
    const QString name =
        symbol == Symbol::filledMicrophone ? QStringLiteral("mic.fill") : QStringLiteral("mic");
    return svgIcon(inColor(drawing(name), color.value_or(Qt::white)), panelSizes());
}

QIcon textIcon(const std::string& text, const std::optional<QColor>& color) {
    return drawnIcon(QSize(side, side), panelSizes(),
                     [text = QString::fromStdString(text), color](QPainter& painter) {
                         QFont font = QGuiApplication::font();
                         font.setPixelSize(side);
                         QPainterPath shape;
                         shape.addText(0, 0, font, text);
                         shape.translate(QPointF(side, side) / 2 - shape.boundingRect().center());
                         if (!color) {
                             painter.strokePath(shape, QPen(Qt::black, 3, Qt::SolidLine,
                                                            Qt::RoundCap, Qt::RoundJoin));
                         }
                         painter.fillPath(shape, color.value_or(Qt::white));
                     });
}

}  // namespace tarvik::linuxdesktop
