#include "platform/linux/system/SleepMonitor.h"

#include <utility>

namespace tarvik::linuxdesktop {

SleepMonitor::SleepMonitor(const platform::Clock& clock, platform::Log& log,
                           std::function<void()> onWake)
    : systemBus_(BusConnection::Bus::system, clock, [&log](const Error& error) {
          log.write("TarvikDictate: waking from sleep goes unnoticed, there is no system bus: " +
                    error.localizedDescription);
      }) {
    systemBus_.observeSignal(
        "type='signal',sender='org.freedesktop.login1',path='/org/freedesktop/login1',"
        "interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [onWake = std::move(onWake)](sd_bus_message* message) {
            int isGoingToSleep = 0;
            if (sd_bus_message_read(message, "b", &isGoingToSleep) > 0 && isGoingToSleep == 0) {
                onWake();
            }
        });
}

}  // namespace tarvik::linuxdesktop
