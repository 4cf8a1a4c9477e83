#pragma once

#include <QWidget>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A line across its place. Main thread only.
class QtSeparator final : public QWidget, public platform::View {
  public:
    QtSeparator();

  private:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tarvik::linuxdesktop
