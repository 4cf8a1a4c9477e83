// SPDX-License-Identifier: MIT
#pragma once

#include <QMenu>
#include <functional>
#include <vector>

#include "platform/UserInterface.h"

namespace tarvik::linuxdesktop {

/// A menu as a QMenu; ⌘ in key equivalents becomes Ctrl. Disabled entries are legible where this
/// process draws the menu, and not a panel. Main thread only.
///
/// The key equivalents work in the menu and in every window of the application, except while a
/// modal window waits for an answer.
class QtMenu final : public QObject, public platform::Menu {
  public:
    QtMenu();

    void setItems(std::vector<platform::MenuItem> items) override;
    void setNeedsUpdateHandler(std::function<void()> handler) override;

    QMenu& menu() { return menu_; }

  private:
    bool eventFilter(QObject* receiver, QEvent* event) override;
    void addActions();

    std::vector<platform::MenuItem> items_;
    std::function<void()> onNeedsUpdate_;
    QMenu menu_;
};

}  // namespace tarvik::linuxdesktop
