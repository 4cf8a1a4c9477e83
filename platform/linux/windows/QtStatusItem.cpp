// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtStatusItem.h"

#include <QCoreApplication>
#include <QCursor>
#include <utility>

#include "platform/linux/windows/ScreenGeometry.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

namespace {

// Bright enough for dark panels, dark enough for light ones.
const QColor systemRed(255, 59, 48);

// Long enough for a panel that starts at login together with the application.
constexpr Seconds trayTimeout(5);

}  // namespace

QtStatusItem::QtStatusItem(const platform::Clock& clock, platform::Log& log)
    : log_(log),
      trayHost_(std::make_unique<TrayHost>(clock, [this] { appear(); })),
      trayDeadline_([this] { reportMissingTray(); }) {
    trayDeadline_.set(clock.now() + trayTimeout);
}

QtStatusItem::~QtStatusItem() = default;

void QtStatusItem::appear() {
    trayDeadline_.clear();
    trayIcon_ = std::make_unique<QSystemTrayIcon>();
    QObject::connect(trayIcon_.get(), &QSystemTrayIcon::activated, this,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger) {
                             openMenu();
                         }
                     });
    if (menu_) {
        trayIcon_->setContextMenu(&menu_->menu());
    }
    update();
    trayIcon_->show();
    // The tray host is the caller, so it can be destroyed only in a later turn.
    QMetaObject::invokeMethod(
        this, [this] { trayHost_.reset(); }, Qt::QueuedConnection);
}

void QtStatusItem::reportMissingTray() {
    trayDeadline_.clear();
    log_.write("TarvikDictate: no tray here — the setup window is the way in");
}

void QtStatusItem::setMenu(std::shared_ptr<platform::Menu> menu) {
    if (trayIcon_) {
        trayIcon_->setContextMenu(nullptr);
    }
    menu_ = std::dynamic_pointer_cast<QtMenu>(std::move(menu));
    if (trayIcon_ && menu_) {
        trayIcon_->setContextMenu(&menu_->menu());
    }
}

void QtStatusItem::setImage(std::shared_ptr<platform::Image> image) {
    image_ = std::dynamic_pointer_cast<QtImage>(std::move(image));
    update();
}

void QtStatusItem::setContentTintColor(std::optional<platform::SystemColor> color) {
    tint_ = color;
    update();
}

void QtStatusItem::setTitle(const std::string& title) {
    title_ = title;
    update();
}

void QtStatusItem::setKeyAccepted(bool isKeyAccepted) {
    isKeyAccepted_ = isKeyAccepted;
    if (trayIcon_) {
        trayIcon_->setToolTip(description());
    }
}

QIcon QtStatusItem::icon() const {
    const std::optional<QColor> color = tint_ ? std::optional(systemRed) : std::nullopt;
    return image_ ? image_->icon(color) : textIcon(title_, color);
}

QString QtStatusItem::description() const {
    QString text = image_ ? QString::fromStdString(image_->accessibilityDescription())
                          : QCoreApplication::applicationName();
    if (tint_) {
        text += QStringLiteral(" – recording");
    }
    if (!isKeyAccepted_) {
        text += QStringLiteral(" – the speech service refuses the API key");
    }
    return text;
}

void QtStatusItem::update() {
    if (trayIcon_) {
        trayIcon_->setIcon(icon());
        trayIcon_->setToolTip(description());
    }
}

// A click of the main button opens the menu, as it does in a menu bar. Only X11 lets a menu appear
// without a window of its own. Some desktops let menus cover panels, so the menu's position is
// chosen here: the icon has to stay visible.
void QtStatusItem::openMenu() {
    if (!menu_ || x11Connection() == nullptr) {
        return;
    }
    QMenu& menu = menu_->menu();
    menu.ensurePolished();
    // A panel on the bus does not tell the position of the icon. The pointer has just clicked the
    // icon, so the pointer's position stands for it.
    const QRect icon = trayIcon_->geometry();
    const QRect anchor = icon.isValid() ? icon : QRect(QCursor::pos(), QSize(1, 1));
    menu.popup(menuPosition(anchor, menu.sizeHint(), screenAreaAt(anchor.center())));
}

}  // namespace tarvik::linuxdesktop
