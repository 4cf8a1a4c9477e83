// SPDX-License-Identifier: MIT

#include "platform/linux/windows/Assets.h"

#include <QDir>
#include <QFile>

// The macro works only outside of namespaces.
static void loadAssets() {
    Q_INIT_RESOURCE(assets);
}

namespace tarvik::linuxdesktop {

QIcon picture(const std::string& name) {
    loadAssets();
    // Each file is one size of the picture.
    const QDir sizes(QStringLiteral(":/pictures/") + QString::fromStdString(name));
    QIcon made;
    for (const QString& file : sizes.entryList(QDir::Files)) {
        made.addFile(sizes.filePath(file));
    }
    return made;
}

QByteArray symbolDrawing(const QString& name) {
    loadAssets();
    QFile file(QStringLiteral(":/symbols/") + name + QStringLiteral(".svg"));
    // A drawing that is built in can always be read.
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("a symbol is missing");
    }
    return file.readAll();
}

QIcon applicationIcon() {
    return QIcon::fromTheme(QStringLiteral("com.tarvik.dictate"), picture("AppIcon"));
}

QIcon genericApplicationIcon() {
    return QIcon::fromTheme(QStringLiteral("application-x-executable"),
                            picture("GenericApplication"));
}

}  // namespace tarvik::linuxdesktop
