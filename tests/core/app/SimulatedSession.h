// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

#include "tests/core/app/ApplicationUnderTest.h"
#include "tests/core/app/SessionWorld.h"

namespace tarvik {

/// The application on the simulated platform, launched and idle.
class SimulatedSession final : public SessionWorld {
  public:
    SimulatedSession();

    void pressHold() override { platform().eventManager().press(Application::holdHotkey); }
    void releaseHold() override { platform().eventManager().release(Application::holdHotkey); }
    void tapToggle() override;
    void wake() override { platform().workspace().wake(); }
    void setKey(bool isStored) override;
    void focus(std::optional<std::size_t> element) override;
    void bringToFront(std::optional<int> process) override;
    void speak() override { app_.speak(); }
    void accept(std::size_t socket) override { task(socket).open(); }
    void close(std::size_t socket) override { task(socket).close(); }
    void lose(std::size_t socket) override { task(socket).fail({54, "lost"}); }
    void say(std::size_t socket, const std::string& text, bool isFinal) override;
    void sayNothing(std::size_t socket) override { task(socket).deliverText("{}"); }
    void settle() override { platform().runUntilIdle(); }
    void advance(Seconds interval) override { platform().advance(interval); }
    std::vector<std::string> takeEvents() override;
    std::vector<std::string> state() const override;

  private:
    using Application = ApplicationUnderTest;

    simulated::SimulatedPlatform& platform() { return app_.platform; }
    simulated::SimulatedWebSocketTask& task(std::size_t socket);

    // The state is read through accessors that are not const.
    mutable ApplicationUnderTest app_;
    std::vector<std::shared_ptr<simulated::SimulatedElement>> elements_;
};

}  // namespace tarvik
