// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <string>

namespace tarvik::linuxdesktop {

/// `text` for a Qt control that reads an ampersand as the mark of a mnemonic letter: every
/// ampersand is doubled, so that the control shows `text` as it is.
inline QString withoutMnemonics(const std::string& text) {
    return QString::fromStdString(text).replace(u'&', QStringLiteral("&&"));
}

}  // namespace tarvik::linuxdesktop
