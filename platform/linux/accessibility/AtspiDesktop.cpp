// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiDesktop.h"

#include <utility>

namespace tarvik::linuxdesktop {

AtspiDesktop::AtspiDesktop(EventLoop& loop, platform::Log& log, AccessibilityState& state)
    : loop_(loop), log_(log), state_(state) {
    connect();
}

AtspiDesktop::~AtspiDesktop() {
    disconnectRegistry();
}

void AtspiDesktop::connect() {
    if (!session_) {
        session_ = AtspiSession::open(loop_, sessionHandlers());
        if (!session_) {
            reportError("there is no session bus");
        }
    } else if (!registry_) {
        session_->queryAddress();
    }
}

AtspiSession::Handlers AtspiDesktop::sessionHandlers() {
    return {[this](bool isEnabled) {
                state_.isEnabled = isEnabled;
                isEnabledKnown_ = true;
                callFirstKnownHandlers();
            },
            [this](const std::string& address) { connectRegistry(address); },
            [this] {
                if (std::exchange(canRestartLauncher_, false)) {
                    session_->queryAddress();
                }
            },
            [this](const std::string& reason) {
                reportError("there is no accessibility bus: " + reason);
            },
            [this] { onSessionLost(); }};
}

AtspiRegistry::Handlers AtspiDesktop::registryHandlers() {
    return {[this](std::shared_ptr<const FocusSnapshot> focus) {
                state_.focus.store(std::move(focus));
            },
            [this](bool isRegistered, const std::string& reason) {
                state_.isConnected = isRegistered;
                if (isRegistered) {
                    canRestartLauncher_ = true;
                    isErrorReported_ = false;
                    callFirstKnownHandlers();
                } else {
                    reportError("programs do not report their focus: " + reason);
                }
            },
            [this] { onRegistryLost(); }};
}

void AtspiDesktop::connectRegistry(const std::string& address) {
    if (registry_ && address == address_) {
        return;
    }
    disconnectRegistry();
    address_ = address;
    state_.focus.store(std::make_shared<const FocusSnapshot>());
    registry_ = AtspiRegistry::open(loop_, address, registryHandlers());
    if (!registry_) {
        reportError("the accessibility bus cannot be joined at " + address);
    }
}

void AtspiDesktop::disconnectRegistry() {
    registry_.reset();
    state_.isConnected = false;
    state_.focus.store(nullptr);
}

void AtspiDesktop::onSessionLost() {
    session_.reset();
    state_.isEnabled = false;
    reportError("the session bus is lost");
}

void AtspiDesktop::onRegistryLost() {
    const bool wasConnected = state_.isConnected;
    disconnectRegistry();
    reportError("the accessibility bus is lost");
    // The address may be another one by now. A bus that never worked would be queried for ever.
    if (session_ && wasConnected) {
        session_->queryAddress();
    }
}

void AtspiDesktop::reportError(const std::string& reason) {
    // Until all is well again, further errors follow from the first one.
    if (!std::exchange(isErrorReported_, true)) {
        log_.write("TarvikDictate: accessibility — " + reason);
    }
    callFirstKnownHandlers();
}

void AtspiDesktop::whenFirstKnown(std::function<void()> handler) {
    firstKnownHandlers_.push_back(std::move(handler));
    callFirstKnownHandlers();
}

void AtspiDesktop::callFirstKnownHandlers() {
    if (isErrorReported_ || (isEnabledKnown_ && state_.isConnected)) {
        for (const auto& handler : std::exchange(firstKnownHandlers_, {})) {
            handler();
        }
    }
}

void AtspiDesktop::enable() {
    if (session_) {
        session_->enable();
    }
}

void AtspiDesktop::scan(platform::ProcessIdentifier process) {
    if (registry_) {
        registry_->focus().scan(process);
    }
}

MessageBus* AtspiDesktop::accessibilityBus() {
    return registry_ && state_.isConnected ? &registry_->bus() : nullptr;
}

}  // namespace tarvik::linuxdesktop
