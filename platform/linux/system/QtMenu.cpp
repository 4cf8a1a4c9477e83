#include "platform/linux/system/QtMenu.h"

#include <QAction>
#include <QKeySequence>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

QKeySequence shortcut(const platform::MenuItem& item) {
    const QString key = QString::fromStdString(item.keyEquivalent);
    if (key.isEmpty()) {
        return {};
    }
    QString text;
    if ((item.modifierMask & platform::commandKeyFlag) != 0) {
        text += QStringLiteral("Ctrl+");
    }
    if ((item.modifierMask & platform::shiftKeyFlag) != 0 || key != key.toLower()) {
        text += QStringLiteral("Shift+");
    }
    return QKeySequence(text + key.toUpper(), QKeySequence::PortableText);
}

// In a QAction an ampersand marks the letter that follows it.
QString literalText(const std::string& title) {
    return QString::fromStdString(title).replace(u'&', QStringLiteral("&&"));
}

}  // namespace

QtMenu::QtMenu() {
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] {
        // A copy: the handler may set another one.
        if (const std::function<void()> handler = needsUpdate_) {
            handler();
        }
    });
}

void QtMenu::setItems(std::vector<platform::MenuItem> items) {
    menu_.clear();
    for (platform::MenuItem& item : items) {
        addItem(std::move(item));
    }
}

void QtMenu::addItem(platform::MenuItem item) {
    if (item.isSeparator) {
        menu_.addSeparator();
        return;
    }
    QAction* action = menu_.addAction(literalText(item.title));
    action->setEnabled(item.isEnabled);
    action->setShortcut(shortcut(item));
    action->setShortcutVisibleInContextMenu(true);
    if (item.action) {
        QObject::connect(action, &QAction::triggered, action, [perform = std::move(item.action)] {
            // A copy: the menu may be filled anew, and this entry destroyed, meanwhile.
            const std::function<void()> kept = perform;
            kept();
        });
    }
}

void QtMenu::setNeedsUpdateHandler(std::function<void()> handler) {
    needsUpdate_ = std::move(handler);
}

}  // namespace tarvik::linuxdesktop
