// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A horizontal line as wide as its layout allows. Main thread only.
class QtSeparator final : public QWidget, public platform::View {
  public:
    QtSeparator();

  private:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tarvik::linuxdesktop
