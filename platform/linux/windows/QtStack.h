#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A row or column. A column gives each view its natural width, but the whole width to one that
/// stretches or contains one that does. What is left of its height stays empty: below the views, or
/// around them where they stand in the middle. Main thread only.
class QtStack final : public QWidget, public platform::View {
  public:
    explicit QtStack(const platform::StackDescription& description);
    ~QtStack() override;

  private:
    std::vector<std::shared_ptr<platform::View>> views_;
};

}  // namespace tarvik::linuxdesktop
