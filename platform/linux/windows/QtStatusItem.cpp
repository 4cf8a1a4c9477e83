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

// A panel that starts at login with the application is there by then.
constexpr Seconds patienceForTray(5);

}  // namespace

QtStatusItem::QtStatusItem(const platform::Clock& clock, platform::Log& log)
    : log_(log),
      trayHost_(std::make_unique<TrayHost>(clock, [this] { appear(); })),
      patienceEnd_([this] { reportMissingTray(); }) {
    patienceEnd_.set(clock.now() + patienceForTray);
}

QtStatusItem::~QtStatusItem() = default;

void QtStatusItem::appear() {
    patienceEnd_.clear();
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
    // Its work is done, but it is what called.
    QMetaObject::invokeMethod(
        this, [this] { trayHost_.reset(); }, Qt::QueuedConnection);
}

void QtStatusItem::reportMissingTray() {
    patienceEnd_.clear();
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

QIcon QtStatusItem::icon() const {
    const std::optional<QColor> color = tint_ ? std::optional(systemRed) : std::nullopt;
    return image_ ? image_->icon(color) : textIcon(title_, color);
}

QString QtStatusItem::description() const {
    const QString name = image_ ? QString::fromStdString(image_->accessibilityDescription())
                                : QCoreApplication::applicationName();
    return tint_ ? name + QStringLiteral(" – recording") : name;
}

void QtStatusItem::update() {
    if (trayIcon_) {
        trayIcon_->setIcon(icon());
        trayIcon_->setToolTip(description());
    }
}

// A click of the main button opens the menu, as it does in a menu bar. Only X11 lets a menu appear
// without a window of its own. Some desktops let a menu cover panels; this one is to leave its icon
// visible.
void QtStatusItem::openMenu() {
    if (!menu_ || x11Connection() == nullptr) {
        return;
    }
    QMenu& menu = menu_->menu();
    menu.ensurePolished();
    // A panel on the bus does not say where the icon is; it is what the user has just clicked.
    const QRect icon = trayIcon_->geometry();
    const QRect anchor = icon.isValid() ? icon : QRect(QCursor::pos(), QSize(1, 1));
    menu.popup(menuPlace(anchor, menu.sizeHint(), screenAreaAt(anchor.center())));
}

}  // namespace tarvik::linuxdesktop
