// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/windows/QtUserInterface.h"
#include "platform/linux/windows/QtWindow.h"

namespace tarvik::tests {

/// A shown window with every kind of view. Its content does not fit at the minimum size.
class SampleWindow {
  public:
    explicit SampleWindow(platform::UserInterface& userInterface);

    linuxdesktop::QtWindow& window() { return dynamic_cast<linuxdesktop::QtWindow&>(*window_); }
    QWidget& widget() { return window().widget(); }
    QWidget& content() { return *widget().findChild<QScrollArea*>()->widget(); }
    QLineEdit* field() { return content().findChild<QLineEdit*>(); }
    QWidget* separator() { return dynamic_cast<QWidget*>(separator_.get()); }
    /// The control or label with `text`, which marks no letter.
    template <typename Widget>
    Widget* find(const char* text) {
        for (Widget* candidate : content().findChildren<Widget*>()) {
            if (candidate->text().remove(QLatin1Char('&')) == QString::fromUtf8(text)) {
                return candidate;
            }
        }
        return nullptr;
    }
    /// The views that contain no other views.
    QList<QWidget*> leaves();
    /// The rectangle of a view in the content.
    QRect rectOf(const QWidget& widget) {
        return {widget.mapTo(&content(), QPoint()), widget.size()};
    }

    int saves = 0;
    int closings = 0;

  private:
    std::shared_ptr<platform::View> instructions();
    std::shared_ptr<platform::View> keyRow();
    std::shared_ptr<platform::View> statusRow(const std::string& name, const std::string& status,
                                              const std::string& button);

    platform::UserInterface& userInterface_;
    std::shared_ptr<platform::View> separator_;
    std::shared_ptr<platform::Window> window_;
};

}  // namespace tarvik::tests
