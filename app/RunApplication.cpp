// SPDX-License-Identifier: MIT

#include "app/RunApplication.h"

#include <memory>

#include "app/AppDelegate.h"

namespace tarvik {

int runApplication(platform::Platform& platform) {
    platform::Application& application = platform.application();
    const auto delegate = std::make_shared<AppDelegate>(platform);
    application.setDelegate(delegate);
    application.setActivationPolicy(platform::ActivationPolicy::accessory);
    const int status = application.run();
    delegate->applicationWillTerminate();
    return status;
}

}  // namespace tarvik
