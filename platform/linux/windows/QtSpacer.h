#pragma once

#include <QWidget>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// Nothing, at the size that was asked for. Main thread only.
class QtSpacer final : public QWidget, public platform::View {
  public:
    explicit QtSpacer(const platform::ViewLayout& layout);
};

}  // namespace tarvik::linuxdesktop
