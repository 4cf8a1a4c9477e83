#pragma once

#include <QByteArray>
#include <QIcon>
#include <QString>
#include <string>

namespace tarvik::linuxdesktop {

// The artwork that is part of the program. Main thread only.

/// A picture at every size it was made in; a null icon when there is none of this name.
QIcon picture(const std::string& name);
/// The drawing of a symbol as SVG.
QByteArray symbolDrawing(const QString& name);

/// The application's own icon, the desktop's version of it where its theme has one.
QIcon applicationIcon();
/// What stands for an application without an icon.
QIcon genericApplicationIcon();

}  // namespace tarvik::linuxdesktop
