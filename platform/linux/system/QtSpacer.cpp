#include "platform/linux/system/QtSpacer.h"

#include "platform/linux/system/ViewGeometry.h"

namespace tarvik::linuxdesktop {

QtSpacer::QtSpacer(const platform::ViewLayout& layout) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    applyLayout(*this, layout);
}

}  // namespace tarvik::linuxdesktop
