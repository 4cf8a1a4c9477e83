// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtMenu.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/linux/windows/LinuxTexts.h"
#include "platform/linux/windows/Mnemonics.h"
#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/UserAction.h"

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

}  // namespace

QtMenu::QtMenu() {
    // Qt finds no shortcut of a menu that belongs to no window.
    qApp->installEventFilter(this);
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] {
        // Disabled entries have to be legible, also after the theme has changed.
        menu_.setPalette(withLegibleDisabledText(QApplication::palette(&menu_)));
        // A copy, because the handler may set another handler.
        if (const std::function<void()> handler = onNeedsUpdate_) {
            handler();
        }
    });
}

// Entries are changed in place where the order of entries and separators stays the same. A panel
// that shows the menu over the bus loses the menu when its entries are replaced right before it
// opens.
void QtMenu::setItems(std::vector<platform::MenuItem> items) {
    const bool hasSameShape =
        std::equal(items.begin(), items.end(), items_.begin(), items_.end(),
                   [](const platform::MenuItem& a, const platform::MenuItem& b) {
                       return a.isSeparator == b.isSeparator;
                   });
    items_ = std::move(items);
    if (!hasSameShape) {
        addActions();
    }
    const QList<QAction*> actions = menu_.actions();
    for (std::size_t index = 0; index < items_.size(); ++index) {
        const platform::MenuItem& item = items_[index];
        if (!item.isSeparator) {
            QAction& action = *actions[static_cast<qsizetype>(index)];
            action.setText(withoutMnemonics(shownText(item.title)));
            action.setEnabled(item.isEnabled);
            action.setShortcut(shortcut(item));
        }
    }
}

// A key goes to the widget with the focus first, and then on to its parents. This happens once, at
// the first widget.
bool QtMenu::eventFilter(QObject* receiver, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !receiver->isWidgetType() ||
        QApplication::activeModalWidget() != nullptr) {
        return false;
    }
    const auto* key = static_cast<QKeyEvent*>(event);
    for (QAction* action : menu_.actions()) {
        if (action->isEnabled() && !action->shortcut().isEmpty() && !key->isAutoRepeat() &&
            action->shortcut() == QKeySequence(key->keyCombination())) {
            menu_.close();
            action->trigger();
            return true;
        }
    }
    return false;
}

void QtMenu::addActions() {
    menu_.clear();
    for (std::size_t index = 0; index < items_.size(); ++index) {
        if (items_[index].isSeparator) {
            menu_.addSeparator();
            continue;
        }
        QAction* action = menu_.addAction(QString());
        action->setShortcutVisibleInContextMenu(true);
        QObject::connect(action, &QAction::triggered, action, [this, index] {
            // A copy, because the action may replace the items.
            if (const std::function<void()> perform = items_[index].action) {
                const UserAction choice;
                perform();
            }
        });
    }
}

void QtMenu::setNeedsUpdateHandler(std::function<void()> handler) {
    onNeedsUpdate_ = std::move(handler);
}

}  // namespace tarvik::linuxdesktop
