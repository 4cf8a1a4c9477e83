// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>
#include <string>

namespace tarvik::linuxdesktop {

// The artwork of the folder assets, as it is built into the program. Main thread only.

/// The drawing of this name as SVG; empty for an unknown name. `name` is that of a file in assets,
/// without its extension.
QByteArray drawing(const QString& name);

/// The drawing of this name as an icon; a null icon for an unknown name.
QIcon picture(const std::string& name);
/// The application's own icon.
QIcon applicationIcon();
/// The icon for an application without one of its own.
QIcon genericApplicationIcon();

}  // namespace tarvik::linuxdesktop
