// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtTextField.h"

#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

QtTextField::QtTextField(const platform::TextFieldDescription& description) {
    setFont(qtFont({}));
    setEchoMode(description.isSecure ? QLineEdit::Password : QLineEdit::Normal);
    setText(QString::fromStdString(description.text));
    setCursorPosition(0);
    setPlaceholderText(QString::fromStdString(description.placeholder));
    setAccessibleName(QString::fromStdString(description.accessibilityLabel));
    applyLayout(*this, description.layout);
}

std::string QtTextField::text() const {
    return QLineEdit::text().toStdString();
}

}  // namespace tarvik::linuxdesktop
