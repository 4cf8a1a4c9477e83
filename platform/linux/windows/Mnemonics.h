// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QWidget;

namespace tarvik::linuxdesktop {

/// Gives each button and check box in `content` a letter of its own title, which presses the
/// control together with Alt. No letter is given twice. A control that has a letter keeps the
/// letter. Main thread only.
void giveMnemonics(QWidget& content);

/// `text` for a Qt control that reads an ampersand as the mark of a mnemonic letter: every
/// ampersand is doubled, so that the control shows `text` as it is.
inline QString withoutMnemonics(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

}  // namespace tarvik::linuxdesktop
