// SPDX-License-Identifier: MIT

#include <memory>

#include "app/RunApplication.h"
#include "platform/Platform.h"

int main(int argc, char** argv) {
    const std::unique_ptr<tarvik::platform::Platform> platform =
        tarvik::platform::makePlatform(argc, argv);
    return tarvik::runApplication(*platform);
}
