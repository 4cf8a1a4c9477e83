#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <memory>
#include <optional>
#include <string>

#include "platform/Clock.h"
#include "platform/UserInterface.h"
#include "platform/linux/system/QtImage.h"
#include "platform/linux/system/QtMenu.h"
#include "platform/linux/system/TrayHost.h"

namespace tarvik::linuxdesktop {

/// The status item as a tray icon. It keeps what it is told while the desktop has no tray, and
/// appears as soon as there is one. Main thread only.
class QtStatusItem final : public QObject,
                           public platform::StatusItem,
                           public platform::StatusButton {
  public:
    /// `clock` outlives the item.
    explicit QtStatusItem(const platform::Clock& clock);
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
    bool eventFilter(QObject* object, QEvent* event) override;
    void appear();
    void update();
    void openMenu();

    std::shared_ptr<QtImage> image_;
    std::optional<platform::SystemColor> tint_;
    std::string title_;
    std::shared_ptr<QtMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> trayIcon_;
    std::unique_ptr<TrayHost> trayHost_;
};

}  // namespace tarvik::linuxdesktop
