// SPDX-License-Identifier: MIT

#include "tests/core/app/SimulatedSession.h"

namespace tarvik {

namespace {

// Settings with which a launch shows no window, and no call to action comes.
simulated::UserDefaultsContents quietSettings() {
    return {{"deepgramApiKey", std::string("secret")},
            {"lastWelcomeShownForVersion", std::string("0.1.0")},
            {"loginItemAutoConfigured", true},
            {"ctaPermanentlyDismissed", true}};
}

std::string narrow(const std::u16string& text) {
    return {text.begin(), text.end()};
}

}  // namespace

SimulatedSession::SimulatedSession() : app_(quietSettings()) {
    for (std::size_t index = 0; index < elements; ++index) {
        elements_.push_back(std::make_shared<simulated::SimulatedElement>());
    }
    elements_[refusingElement]->writeStatus = platform::axErrorAttributeUnsupported;
    app_.launch({.isDefaultLaunch = false});
    platform().journal().clear();
}

void SimulatedSession::tapToggle() {
    platform().eventManager().press(Application::toggleHotkey);
    platform().eventManager().release(Application::toggleHotkey);
}

void SimulatedSession::setKey(bool isStored) {
    if (isStored) {
        platform().userDefaults().setString("secret", "deepgramApiKey");
    } else {
        platform().userDefaults().removeObjectForKey("deepgramApiKey");
    }
}

void SimulatedSession::focus(std::optional<std::size_t> element) {
    platform().accessibility().focusedElement = element ? elements_[*element] : nullptr;
}

void SimulatedSession::bringToFront(std::optional<int> process) {
    platform().workspace().setFrontmostProcess(process);
}

simulated::SimulatedWebSocketTask& SimulatedSession::task(std::size_t socket) {
    // A session has one task. A core that opened too few sockets fails here.
    return *platform().webSockets().sessions().at(socket)->tasks().at(0);
}

void SimulatedSession::say(std::size_t socket, const std::string& text, bool isFinal) {
    task(socket).deliverText(simulated::transcriptJson(text, isFinal));
}

std::vector<std::string> SimulatedSession::takeEvents() {
    std::vector<std::string> events = platform().journal().lines();
    platform().journal().clear();
    return events;
}

std::vector<std::string> SimulatedSession::state() const {
    std::vector<std::string> state = {
        "usage " + std::to_string(app_.recordedSeconds()),
        "timers " + std::to_string(app_.platform.time().runningTimers())};
    for (const auto& element : elements_) {
        state.push_back("element: " + element->text);
    }
    const auto& keyboard = app_.platform.keyboardEvents();
    for (const int process : processes) {
        state.push_back("typed: " + narrow(keyboard.typed(process)));
    }
    state.push_back("typed: " + narrow(keyboard.typed(std::nullopt)));
    for (const auto& task : app_.platform.webSockets().tasks()) {
        std::string line = "socket:";
        for (const platform::WebSocketMessage& message : task->sent()) {
            line += " " + (message.kind == platform::WebSocketMessage::Kind::string
                               ? message.bytes
                               : std::to_string(message.bytes.size()) + " bytes");
        }
        state.push_back(line);
    }
    return state;
}

}  // namespace tarvik
