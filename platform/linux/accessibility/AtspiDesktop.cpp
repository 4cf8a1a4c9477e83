#include "platform/linux/accessibility/AtspiDesktop.h"

#include <utility>

namespace tarvik::linuxdesktop {

AtspiDesktop::AtspiDesktop(platform::Log& log, AccessibilityState& state)
    : log_(log), state_(state) {
    connect();
}

AtspiDesktop::~AtspiDesktop() {
    leaveRegistry();
}

std::vector<MessageBus*> AtspiDesktop::buses() {
    std::vector<MessageBus*> buses;
    if (session_) {
        buses.push_back(&session_->bus());
    }
    if (registry_) {
        buses.push_back(&registry_->bus());
    }
    return buses;
}

void AtspiDesktop::dispatch() {
    if (session_ && !session_->bus().dispatch()) {
        session_.reset();
        state_.isEnabled = false;
        complain("the session bus is lost");
    }
    if (std::optional<std::string> address = std::exchange(newAddress_, std::nullopt)) {
        joinRegistry(*address);
    }
    if (registry_ && !registry_->bus().dispatch()) {
        const bool wasConnected = state_.isConnected;
        leaveRegistry();
        complain("the accessibility bus is lost");
        // It may be another one by now. One that never worked would be asked for without end.
        if (session_ && wasConnected) {
            session_->askForAddress();
        }
    }
    announceWhatIsKnown();
}

void AtspiDesktop::whenFirstKnown(std::function<void()> handler) {
    awaitingFirst_.push_back(std::move(handler));
}

void AtspiDesktop::announceWhatIsKnown() {
    if (isInTrouble_ || (knowsSwitch_ && state_.isConnected)) {
        for (const auto& handler : std::exchange(awaitingFirst_, {})) {
            handler();
        }
    }
}

void AtspiDesktop::connect() {
    if (!session_) {
        session_ = AtspiSession::open(sessionHandlers());
        if (!session_) {
            complain("there is no session bus");
        }
    } else if (!registry_) {
        session_->askForAddress();
    }
}

AtspiSession::Handlers AtspiDesktop::sessionHandlers() {
    return {[this](bool isEnabled) {
                state_.isEnabled = isEnabled;
                knowsSwitch_ = true;
            },
            [this](std::string address) { newAddress_ = std::move(address); },
            [this] {
                if (std::exchange(isWorthStarting_, false)) {
                    session_->askForAddress();
                }
            },
            [this](const std::string& reason) {
                complain("there is no accessibility bus: " + reason);
            }};
}

void AtspiDesktop::joinRegistry(const std::string& address) {
    if (registry_ && address == address_) {
        return;
    }
    leaveRegistry();
    address_ = address;
    state_.focus.store(std::make_shared<const FocusSnapshot>());
    registry_ = AtspiRegistry::open(
        address, {[this](std::shared_ptr<const FocusSnapshot> focus) {
                      state_.focus.store(std::move(focus));
                  },
                  [this](bool isRegistered, const std::string& reason) {
                      state_.isConnected = isRegistered;
                      if (isRegistered) {
                          isWorthStarting_ = true;
                          isInTrouble_ = false;
                      } else {
                          complain("programs do not report their focus: " + reason);
                      }
                  }});
    if (!registry_) {
        complain("the accessibility bus cannot be joined at " + address);
    }
}

void AtspiDesktop::leaveRegistry() {
    registry_.reset();
    state_.isConnected = false;
    state_.focus.store(nullptr);
}

void AtspiDesktop::complain(const std::string& trouble) {
    // What follows from the first trouble, until all is well again, says nothing new.
    if (!std::exchange(isInTrouble_, true)) {
        log_.write("TarvikDictate: accessibility — " + trouble);
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
