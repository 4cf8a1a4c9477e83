#include <memory>

#include "app/AppDelegate.h"
#include "platform/Platform.h"

int main(int argc, char** argv) {
    const std::unique_ptr<tarvik::platform::Platform> platform =
        tarvik::platform::makePlatform(argc, argv);
    tarvik::platform::Application& application = platform->application();
    const auto delegate = std::make_shared<tarvik::AppDelegate>(*platform);
    application.setDelegate(delegate);
    application.setActivationPolicy(tarvik::platform::ActivationPolicy::accessory);
    const int status = application.run();
    delegate->applicationWillTerminate();
    return status;
}
