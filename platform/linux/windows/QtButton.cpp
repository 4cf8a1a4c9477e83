// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include "platform/linux/windows/Mnemonics.h"
#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/Scaling.h"
#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

namespace {

double focusWidth() {
    return pixels(2);
}

double radius() {
    return pixels(5);
}

}  // namespace

QtButton::QtButton(const platform::ButtonDescription& description)
    : title_(description.title),
      isLarge_(description.controlSize == platform::ControlSize::large),
      titleColor_(description.contentTintColor) {
    setFont(qtFont(description.font.value_or(platform::Font{})));
    setText(withoutMnemonics(QString::fromStdString(title_)));
    setAccessibleName(QString::fromStdString(description.accessibilityLabel));
    setAutoDefault(true);
    setFlat(!description.isBordered);
    setAttribute(Qt::WA_Hover);
    if (isFlat()) {
        setCursor(Qt::PointingHandCursor);
    }
    applyLayout(*this, description.layout);
    if (description.action) {
        connect(this, &QPushButton::clicked, this, description.action);
    }
}

void QtButton::setAttributedTitle(const platform::AttributedTitle& title) {
    title_ = title.text;
    titleColor_ = title.foregroundColor;
    setFont(qtFont(title.font));
    setText(withoutMnemonics(QString::fromStdString(title_)));
}

void QtButton::setBezelColor(platform::Color color) {
    bezelColor_ = color;
    update();
}

QSize QtButton::sizeHint() const {
    const QSize natural = QPushButton::sizeHint();
    if (isFlat()) {
        return natural;
    }
    return natural + (isLarge_ ? QSize(pixels(28), pixels(6)) : QSize(pixels(14), pixels(2)));
}

void QtButton::paintRing(QPainter& painter, double width) const {
    const double half = width / 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::WindowText), width));
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), radius(), radius());
}

// Drawn here because styles shade a coloured button, and the bezel has to have exactly this colour.
void QtButton::paintBezel(QPainter& painter, const QColor& color) const {
    constexpr int hoverShade = 108;
    constexpr int pressShade = 118;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDown()       ? color.darker(pressShade)
                     : underMouse() ? color.lighter(hoverShade)
                                    : color);
    if (!hasFocus()) {
        painter.drawRoundedRect(rect(), radius(), radius());
        return;
    }
    // The gap makes the ring visible whatever the two colours are.
    const double inset = focusWidth() + 1;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset),
                            radius() - focusWidth(), radius() - focusWidth());
    paintRing(painter, focusWidth());
}

void QtButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    if (titleColor_) {
        option.palette.setColor(QPalette::ButtonText, qtColor(*titleColor_, palette()));
    }
    if (bezelColor_) {
        paintBezel(painter, qtColor(*bezelColor_, palette()));
        painter.drawControl(QStyle::CE_PushButtonLabel, option);
        return;
    }
    if (isFlat() && (underMouse() || hasFocus())) {
        option.palette.setColor(QPalette::ButtonText, palette().color(QPalette::WindowText));
        QFont underlined = font();
        underlined.setUnderline(true);
        painter.setFont(underlined);
    }
    painter.drawControl(QStyle::CE_PushButton, option);
    // On dark windows styles draw the focus in a darkened accent, which can hardly be seen.
    if (!isFlat() && hasFocus() && palette().color(QPalette::Window).lightnessF() < 0.5F) {
        paintRing(painter, focusWidth());
    } else if (!isFlat() && hasHighContrast()) {
        paintRing(painter, focusWidth() / 2);
    }
}

}  // namespace tarvik::linuxdesktop
