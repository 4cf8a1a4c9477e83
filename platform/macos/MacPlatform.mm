// SPDX-License-Identifier: MIT

#import "platform/macos/MacPlatform.h"

namespace tarvik::macdesktop {

MacPlatform::MacPlatform() : mainQueue_(clock_), audio_(mainQueue_), workspace_(log_) {}

MacPlatform::~MacPlatform() {
    releaseSharedInstances();
    application_.setDelegate(nullptr);
    mainQueue_.discardBlocks();
}

}  // namespace tarvik::macdesktop

namespace tarvik::platform {

// NSApplication reads the arguments by itself.
std::unique_ptr<Platform> makePlatform(int& /*argumentCount*/, char** /*arguments*/) {
    return std::make_unique<macdesktop::MacPlatform>();
}

}  // namespace tarvik::platform
