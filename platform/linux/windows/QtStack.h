// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/Views.h"

namespace tarvik::linuxdesktop {

/// A row or column of views. Main thread only.
///
/// A column gives each view its natural width, and the whole width to a view that stretches or
/// contains a view that does. The rest of a column's height stays empty: below the views, or around
/// them where they are centred.
///
/// A screen reader hears what the eye sees. In a row with controls the first label names the first
/// control, and the other labels describe all of the row's controls. A row of labels alone
/// describes the controls of the row above.
class QtStack final : public QWidget, public platform::View {
  public:
    explicit QtStack(const platform::StackDescription& description);
    ~QtStack() override;

  private:
    template <typename Kind>
    std::vector<Kind*> viewsOf() const;
    std::vector<QWidget*> controls() const;
    void relateRow();
    void relateColumn();

    std::vector<std::shared_ptr<platform::View>> views_;
};

}  // namespace tarvik::linuxdesktop
