// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <memory>
#include <optional>
#include <string>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/UserInterface.h"
#include "platform/linux/loop/Alarm.h"
#include "platform/linux/windows/QtImage.h"
#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/TrayHost.h"

namespace tarvik::linuxdesktop {

/// The status item as a tray icon. Main thread only.
///
/// The item keeps its image and menu while the desktop has no tray. It appears as soon as there is
/// a tray, and again in a tray that was restarted. A tray that is still missing after five seconds
/// costs one line in the log.
class QtStatusItem final : public QObject,
                           public platform::StatusItem,
                           public platform::StatusButton {
  public:
    /// `clock` and `log` outlive the item.
    QtStatusItem(const platform::Clock& clock, platform::Log& log);
    ~QtStatusItem() override;

    platform::StatusButton* button() override { return this; }
    void setMenu(std::shared_ptr<platform::Menu> menu) override;

    void setImage(std::shared_ptr<platform::Image> image) override;
    void setContentTintColor(std::optional<platform::SystemColor> color) override;
    void setTitle(const std::string& title) override;

    /// A key that the service refuses is told in description().
    void setKeyAccepted(bool isKeyAccepted);

    /// The icon that the tray shows or will show.
    QIcon icon() const;
    /// The icon in words: the tool tip, which is also what a screen reader hears.
    QString description() const;

  private:
    void appear();
    void reportMissingTray();
    void update();
    void openMenu();

    platform::Log& log_;
    std::shared_ptr<QtImage> image_;
    std::optional<platform::SystemColor> tint_;
    std::string title_;
    bool isKeyAccepted_ = true;
    std::shared_ptr<QtMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> trayIcon_;
    std::unique_ptr<TrayHost> trayHost_;
    Alarm trayDeadline_;
};

}  // namespace tarvik::linuxdesktop
