// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QColor>
#include <QPalette>
#include <memory>

#include "platform/linux/windows/QtLabel.h"
#include "platform/linux/windows/QtUserInterface.h"
#include "tests/linux/system/ApplicationTest.h"

namespace tarvik::tests {

/// A test of the user interface in Qt. The colours of the desktop are the usual ones again after
/// the test.
class UserInterfaceTest : public ApplicationTest {
  protected:
    ~UserInterfaceTest() override { QApplication::setPalette(QPalette()); }

    /// The colours of a desktop whose windows are `window`.
    static QPalette themed(const QColor& window) { return QPalette(window, window); }

    std::shared_ptr<linuxdesktop::QtLabel> label(const platform::LabelDescription& description) {
        return std::dynamic_pointer_cast<linuxdesktop::QtLabel>(
            userInterface.makeLabel(description));
    }

    const QColor darkWindow{0x2b, 0x2b, 0x2b};
    linuxdesktop::QtUserInterface userInterface{clock, log};
};

}  // namespace tarvik::tests
