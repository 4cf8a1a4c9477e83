// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace tarvik::linuxdesktop {

/// `text` for a Qt control that reads an ampersand as the mark of a mnemonic letter: every
/// ampersand is doubled, so that the control shows `text` as it is.
inline QString withoutMnemonics(QString text) {
    return text.replace(u'&', QStringLiteral("&&"));
}

}  // namespace tarvik::linuxdesktop
