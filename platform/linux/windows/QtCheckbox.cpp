// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtCheckbox.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionButton>

#include "platform/linux/windows/LinuxTexts.h"
#include "platform/linux/windows/Mnemonics.h"
#include "platform/linux/windows/QtAppearance.h"

namespace tarvik::linuxdesktop {

namespace {

// The share of the text's colour in the edge: a contrast of 3 on the usual windows.
constexpr float edgeAlpha = 0.5F;

}  // namespace

QtCheckbox::QtCheckbox(const platform::CheckboxDescription& description) {
    setFont(qtFont({}));
    setText(withoutMnemonics(shownText(description.title)));
    setChecked(description.isOn);
    if (description.action) {
        // Unlike toggled, clicked is emitted for the user's actions only.
        connect(this, &QCheckBox::clicked, this,
                [this, action = description.action] { action(*this); });
    }
}

// Fusion, Qt's default style on most desktops, draws the box's edge hardly darker than the window.
// Other styles draw an edge that can be seen.
void QtCheckbox::paintEvent(QPaintEvent* event) {
    QCheckBox::paintEvent(event);
    if (style()->name() != QLatin1String("fusion")) {
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRectF box = style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, this);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(edgeAlpha);
    QPainter painter(this);
    painter.setPen(edge);
    painter.drawRect(box.adjusted(0.5, 0.5, -0.5, -0.5));
}

}  // namespace tarvik::linuxdesktop
