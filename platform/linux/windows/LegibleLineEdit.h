#pragma once

#include <QLineEdit>

namespace tarvik::linuxdesktop {

/// A field that takes a text of any length, and whose placeholder is legible whatever colours the
/// desktop has: some describe all colours but that one, which Qt then draws black. Main thread
/// only.
class LegibleLineEdit : public QLineEdit {
  public:
    explicit LegibleLineEdit(QWidget* parent = nullptr);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void colorPlaceholder();
};

}  // namespace tarvik::linuxdesktop
