// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtLabel.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "platform/linux/windows/LinuxTexts.h"
#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/Scaling.h"
#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

QtLabel::QtLabel(const platform::LabelDescription& description)
    : color_(description.color),
      alignment_(description.alignment),
      wrapping_(description.wrapping) {
    if (wrapping_ == platform::LabelWrapping::always && description.preferredMaxLayoutWidth) {
        preferredWidth_ = pixels(*description.preferredMaxLayoutWidth);
    }
    setTextFormat(Qt::PlainText);
    setFont(qtFont(description.font));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    policy.setHeightForWidth(wraps());
    setSizePolicy(policy);
    setText(description.text);
    applyLayout(*this, description.layout, minimumSizeHint().width());
}

void QtLabel::setText(const std::string& text) {
    QLabel::setText(shownText(text));
    for (const QPointer<QWidget>& control : described_) {
        if (control) {
            control->setAccessibleDescription(QLabel::text());
        }
    }
}

void QtLabel::describe(QWidget& control) {
    described_.emplace_back(&control);
    control.setAccessibleDescription(QLabel::text());
}

void QtLabel::setTextColor(platform::Color color) {
    color_ = color;
    update();
}

int QtLabel::flags() const {
    const Qt::Alignment horizontal =
        alignment_ == platform::TextAlignment::center ? Qt::AlignHCenter : Qt::AlignLeading;
    return static_cast<int>(horizontal | Qt::AlignTop) | (wraps() ? Qt::TextWordWrap : 0);
}

QSize QtLabel::textSize(int width) const {
    const QFontMetrics metrics = fontMetrics();
    const QRect space(0, 0, width, QWIDGETSIZE_MAX);
    if (text().isEmpty()) {
        // An empty label keeps the place of a state. The marks of a state can be of another font,
        // whose lines are higher.
        return {0, metrics.boundingRect(space, flags(), QStringLiteral("✓✗")).height()};
    }
    const QRect bounds = metrics.boundingRect(space, flags(), text());
    return {bounds.width(), std::max(bounds.height(), metrics.height())};
}

QSize QtLabel::sizeHint() const {
    return textSize(preferredWidth_.value_or(QWIDGETSIZE_MAX));
}

QSize QtLabel::minimumSizeHint() const {
    // No line can be narrower than the longest word.
    return wraps()
               ? QSize(std::min(textSize(1).width(), sizeHint().width()), fontMetrics().height())
               : sizeHint();
}

int QtLabel::heightForWidth(int width) const {
    return textSize(std::min(width, preferredWidth_.value_or(width))).height();
}

QColor QtLabel::drawnColor() const {
    return qtColor(color_, palette());
}

void QtLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(drawnColor());
    const int height = heightForWidth(width());
    const QRect target(0, (this->height() - height) / 2, width(), height);
    painter.drawText(target, flags() | Qt::TextDontClip, text());
}

}  // namespace tarvik::linuxdesktop
