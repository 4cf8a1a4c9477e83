#include "platform/linux/system/QtButton.h"

#include <QStyleOptionButton>
#include <QStylePainter>

#include "platform/linux/system/Points.h"
#include "platform/linux/system/QtAppearance.h"
#include "platform/linux/system/ViewGeometry.h"

namespace tarvik::linuxdesktop {

QtButton::QtButton(const platform::ButtonDescription& description)
    : title_(description.title),
      isLarge_(description.controlSize == platform::ControlSize::large),
      titleColor_(description.contentTintColor) {
    setFont(qtFont(description.font.value_or(platform::Font{})));
    setText(withoutMnemonics(title_));
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
    setText(withoutMnemonics(title_));
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

// Styles shade a coloured button in ways of their own; this is the very colour.
void QtButton::paintBezel(QPainter& painter, const QColor& color) const {
    constexpr int hoverShade = 108;
    constexpr int pressShade = 118;
    const QColor fill = isDown()       ? color.darker(pressShade)
                        : underMouse() ? color.lighter(hoverShade)
                                       : color;
    const double ringWidth = pixels(2);
    const double radius = pixels(5);
    // The ring of the focus has a gap to the bezel, so it is seen whatever the two colours.
    const QRectF bezel = QRectF(rect()).adjusted(ringWidth, ringWidth, -ringWidth, -ringWidth);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    if (!hasFocus()) {
        painter.drawRoundedRect(rect(), radius, radius);
        return;
    }
    painter.drawRoundedRect(bezel.adjusted(1, 1, -1, -1), radius - ringWidth, radius - ringWidth);
    const double half = ringWidth / 2;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::WindowText), ringWidth));
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), radius, radius);
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
}

}  // namespace tarvik::linuxdesktop
