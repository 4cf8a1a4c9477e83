#include "platform/linux/windows/QtSpacer.h"

#include "platform/linux/windows/ViewGeometry.h"

namespace tarvik::linuxdesktop {

QtSpacer::QtSpacer(const platform::ViewLayout& layout) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    applyLayout(*this, layout);
}

}  // namespace tarvik::linuxdesktop
