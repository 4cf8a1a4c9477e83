// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>
#include <string>

namespace tarvik::linuxdesktop {

// The artwork of the folder assets, as it is built into the program. Main thread only.

/// The picture of this name at every size that was rendered; a null icon for an unknown name.
QIcon picture(const std::string& name);
/// The drawing of a symbol as SVG. `name` is that of a file in assets, without its extension.
QByteArray symbolDrawing(const QString& name);

/// The application's own icon; the version of the desktop's theme where the theme has one.
QIcon applicationIcon();
/// The icon for an application without one of its own.
QIcon genericApplicationIcon();

}  // namespace tarvik::linuxdesktop
