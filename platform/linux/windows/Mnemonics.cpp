// SPDX-License-Identifier: MIT

#include "platform/linux/windows/Mnemonics.h"

#include <QAbstractButton>
#include <QKeySequence>

namespace tarvik::linuxdesktop {

void giveMnemonics(QWidget& content) {
    QString given;
    for (QAbstractButton* button : content.findChildren<QAbstractButton*>()) {
        QString title = button->text();
        for (qsizetype i = 0; i < title.size() && button->shortcut().isEmpty(); ++i) {
            const QChar letter = title[i].toLower();
            if (letter.isLetter() && !given.contains(letter)) {
                given += letter;
                button->setText(title.insert(i, QLatin1Char('&')));
            }
        }
    }
}

}  // namespace tarvik::linuxdesktop
