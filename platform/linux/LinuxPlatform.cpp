#include "platform/linux/LinuxPlatform.h"

namespace tarvik::linuxdesktop {

LinuxPlatform::LinuxPlatform(int& argumentCount, char** arguments)
    : application_(argumentCount, arguments),
      mainQueue_(clock_),
      timers_(clock_),
      userDefaults_(FileUserDefaults::standardPath(), log_),
      loginItem_(bundle_.bundlePath()),
      x11Input_(X11Input::open(mainQueue_, log_)),
      accessibility_(
          log_, [this] { return x11Input_->frontmostProcess(); },
          [this] { return x11Input_->canType(); }),
      audio_(mainQueue_, log_),
      webSockets_(log_),
      workspace_([this] { return x11Input_->frontmostProcess(); }, taskLauncher_, clock_, log_),
      userInterface_(clock_, log_) {}

LinuxPlatform::~LinuxPlatform() {
    releaseSharedInstances();
    application_.setDelegate(nullptr);
    mainQueue_.discardBlocks();
}

}  // namespace tarvik::linuxdesktop

namespace tarvik::platform {

std::unique_ptr<Platform> makePlatform(int& argumentCount, char** arguments) {
    return std::make_unique<linuxdesktop::LinuxPlatform>(argumentCount, arguments);
}

}  // namespace tarvik::platform
