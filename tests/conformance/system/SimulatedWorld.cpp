// SPDX-License-Identifier: MIT

#include "tests/conformance/system/SystemWorld.h"
#include "tests/support/SimulatedPlatform.h"

namespace tarvik::tests {

namespace {

class SimulatedSystemWorld final : public SystemWorld {
  public:
    platform::MainQueue& mainQueue() override { return platform_->mainQueue(); }
    platform::TimerService& timers() override { return platform_->timers(); }
    const platform::Clock& clock() override { return platform_->clock(); }
    platform::Log& log() override { return platform_->log(); }
    platform::UserDefaults& userDefaults() override { return platform_->userDefaults(); }
    platform::Application& application() override { return platform_->application(); }
    platform::Bundle& bundle() override { return platform_->bundle(); }
    platform::TaskLauncher& taskLauncher() override { return platform_->taskLauncher(); }
    platform::Workspace& workspace() override { return platform_->workspace(); }
    platform::LoginItemService& loginItem() override { return platform_->loginItem(); }
    platform::UserInterface& userInterface() override { return platform_->userInterface(); }

    bool runUntil(const std::function<bool()>& condition) override {
        while (!condition()) {
            // An empty queue waits for a block of another thread.
            if (!platform_->time().runNext() && !platform_->time().runUntil([&] {
                    return condition() || platform_->time().waitingBlocks() > 0;
                })) {
                return false;
            }
        }
        return true;
    }
    void stall(Seconds interval) override { platform_->time().stall(interval); }

    void watchLog() override { platform_->log().clear(); }
    std::vector<std::string> logLines() override { return platform_->log().lines(); }

    void reopenUserDefaults() override {
        const simulated::UserDefaultsContents contents = platform_->userDefaults().contents();
        platform_.reset();
        platform_ = std::make_unique<simulated::SimulatedPlatform>(contents);
    }

    std::string goodProgram() override { return "/bin/sh"; }
    std::string missingProgram() override { return "/nowhere/program"; }
    void refuseLaunch() override { platform_->taskLauncher().failure = Error{2, "no such file"}; }
    bool wasLaunched(const std::vector<std::string>& arguments) override {
        const auto& launches = platform_->taskLauncher().launches;
        return !launches.empty() && launches.back().arguments == arguments;
    }

    void bringToFront(std::optional<platform::ProcessIdentifier> process) override {
        platform_->workspace().setFrontmostProcess(process);
    }
    void provideSleep() override {}
    void sleepAndWake() override { platform_->workspace().wake(); }
    std::vector<std::string> openedUrls() override { return platform_->workspace().openedUrls; }
    void refuseUrls() override { platform_->workspace().canOpenUrls = false; }

    void refuseLoginItem() override {
        platform_->loginItem().registerFailure = Error{1, "refused"};
        platform_->loginItem().unregisterFailure = Error{1, "refused"};
    }

    std::vector<std::string> openMenu(platform::Menu& menu) override {
        std::vector<std::string> titles;
        for (const platform::MenuItem& item :
             dynamic_cast<simulated::SimulatedMenu&>(menu).open()) {
            titles.push_back(item.title);
        }
        return titles;
    }
    bool chooseFromMenu(platform::Menu& menu, const std::string& title) override {
        return dynamic_cast<simulated::SimulatedMenu&>(menu).choose(title);
    }
    void answerNextAlert(int button, const std::string& text) override {
        platform_->userInterface().answerNextAlert(button, text);
    }

    void type(platform::TextField& field, const std::string& text) override {
        dynamic_cast<simulated::SimulatedTextField&>(field).type(text);
    }
    void press(platform::Button& button) override {
        dynamic_cast<simulated::SimulatedButton&>(button).press();
    }
    void click(platform::Checkbox& checkbox) override {
        dynamic_cast<simulated::SimulatedCheckbox&>(checkbox).click();
    }
    void closeByHand(platform::Window& window) override { window.close(); }

  private:
    std::unique_ptr<simulated::SimulatedPlatform> platform_ =
        std::make_unique<simulated::SimulatedPlatform>();
};

}  // namespace

std::unique_ptr<SystemWorld> makeSimulatedSystemWorld() {
    return std::make_unique<SimulatedSystemWorld>();
}

std::unique_ptr<LoopWorld> makeSimulatedLoopWorld() {
    return makeSimulatedSystemWorld();
}

}  // namespace tarvik::tests
