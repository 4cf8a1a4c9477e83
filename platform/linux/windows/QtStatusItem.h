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

/// The status item as a tray icon. It keeps what it is told while the desktop has no tray, appears
/// as soon as there is one, and again when the tray has been started anew. The log hears of a
/// desktop that still has none after a while. Main thread only.
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

    /// What is or will be shown.
    QIcon icon() const;
    /// What the icon says in words, for a pointer that rests on it and for a screen reader.
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
    std::shared_ptr<QtMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> trayIcon_;
    std::unique_ptr<TrayHost> trayHost_;
    Alarm patienceEnd_;
};

}  // namespace tarvik::linuxdesktop
