// SPDX-License-Identifier: MIT

#include "platform/linux/windows/Assets.h"

#include <QFile>
#include <QList>
#include <QSize>

#include "platform/linux/windows/DrawnIcon.h"

// The macro works only outside of namespaces.
static void loadAssets() {
    Q_INIT_RESOURCE(assets);
}

namespace tarvik::linuxdesktop {

QByteArray drawing(const QString& name) {
    loadAssets();
    QFile file(QStringLiteral(":/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QIcon picture(const std::string& name) {
    // The sizes that window lists and task switchers use.
    const QList<QSize> sizes = {{16, 16}, {24, 24},   {32, 32},  {48, 48},
                                {64, 64}, {128, 128}, {256, 256}};
    const QByteArray svg = drawing(QString::fromStdString(name));
    return svg.isEmpty() ? QIcon() : svgIcon(svg, sizes);
}

QIcon applicationIcon() {
    return picture("AppIcon");
}

QIcon genericApplicationIcon() {
    return QIcon::fromTheme(QStringLiteral("application-x-executable"),
                            picture("GenericApplication"));
}

}  // namespace tarvik::linuxdesktop
