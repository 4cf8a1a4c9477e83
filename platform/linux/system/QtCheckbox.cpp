#include "platform/linux/system/QtCheckbox.h"

#include "platform/linux/system/QtAppearance.h"
#include "platform/linux/system/ViewGeometry.h"

namespace tarvik::linuxdesktop {

QtCheckbox::QtCheckbox(const platform::CheckboxDescription& description) {
    setFont(qtFont({}));
    setText(withoutMnemonics(description.title));
    setChecked(description.isOn);
    if (description.action) {
        // Emitted for what the user does alone.
        connect(this, &QCheckBox::clicked, this,
                [this, action = description.action] { action(*this); });
    }
}

}  // namespace tarvik::linuxdesktop
