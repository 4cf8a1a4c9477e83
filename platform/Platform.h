// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/Accessibility.h"
#include "platform/Application.h"
#include "platform/AudioEngine.h"
#include "platform/Bundle.h"
#include "platform/CaptureAuthorization.h"
#include "platform/Clock.h"
#include "platform/EventManager.h"
#include "platform/KeyboardEvents.h"
#include "platform/Log.h"
#include "platform/LoginItemService.h"
#include "platform/MainQueue.h"
#include "platform/TaskLauncher.h"
#include "platform/TimerService.h"
#include "platform/UserDefaults.h"
#include "platform/UserInterface.h"
#include "platform/WebSocket.h"
#include "platform/Workspace.h"

namespace tarvik::platform {

/// All services of one desktop. The platform outlives every object that uses a service.
///
/// At most one platform exists at a time. While it exists, it is the current platform. Objects get
/// their services through their constructors. Only the `shared` instances use current().
class Platform {
  public:
    Platform();
    virtual ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    virtual MainQueue& mainQueue() = 0;
    virtual TimerService& timers() = 0;
    virtual Clock& clock() = 0;
    virtual Log& log() = 0;
    virtual UserDefaults& userDefaults() = 0;
    virtual Application& application() = 0;
    virtual Bundle& bundle() = 0;
    virtual TaskLauncher& taskLauncher() = 0;
    virtual Workspace& workspace() = 0;
    virtual EventManager& eventManager() = 0;
    virtual AudioService& audio() = 0;
    virtual CaptureAuthorization& captureAuthorization() = 0;
    virtual WebSocketService& webSockets() = 0;
    virtual Accessibility& accessibility() = 0;
    virtual KeyboardEvents& keyboardEvents() = 0;
    virtual LoginItemService& loginItem() = 0;
    virtual UserInterface& userInterface() = 0;

    /// The platform that exists now. Aborts the process when there is none. Any thread.
    static Platform& current();

    /// The one instance of `T` of this platform. The first call makes the instance from the
    /// platform; the platform's destruction destroys it. Any thread.
    template <typename T>
    T& shared() {
        SharedSlot& slot = sharedSlot(&typeTag<T>);
        std::call_once(slot.once, [&] { slot.instance = std::make_shared<T>(*this); });
        return *static_cast<T*>(slot.instance.get());
    }

  protected:
    /// Destroys the shared instances. A derived platform calls this first in its destructor, while
    /// its services still exist.
    void releaseSharedInstances();

  private:
    struct SharedSlot {
        const void* type = nullptr;
        SharedSlot* next = nullptr;
        std::once_flag once;
        std::shared_ptr<void> instance;
    };

    /// The address of the tag identifies the type.
    template <typename T>
    static constexpr char typeTag = 0;

    SharedSlot& sharedSlot(const void* type);

    std::atomic<SharedSlot*> sharedSlots_ = nullptr;
};

/// Makes the platform that this program was built for. `argumentCount` and `arguments` are those of
/// main and outlive the platform. Main thread, once.
///
/// Some systems leave it to the application to detect an instance that runs already. There this
/// call notifies the running instance and ends the process.
std::unique_ptr<Platform> makePlatform(int& argumentCount, char** arguments);

}  // namespace tarvik::platform
