// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// A workspace whose frontmost application a test chooses.
class SimulatedWorkspace final : public platform::Workspace {
  public:
    explicit SimulatedWorkspace(Journal& journal) : journal_(journal) {}

    std::shared_ptr<platform::RunningApplication> frontmostApplication() override {
        journal_.add("frontmostApplication");
        return frontmost_;
    }
    void observeDidWake(std::function<void()> handler) override {
        journal_.add("observeDidWake");
        wakeHandlers_.push_back(std::move(handler));
    }
    bool openUrl(const std::string& url) override {
        journal_.add("openUrl " + url);
        openedUrls.push_back(url);
        return canOpenUrls;
    }

    void activateFileViewerSelecting(const std::string& path) override {
        journal_.add("activateFileViewerSelecting " + path);
    }

    /// Sets the frontmost process. Without one, no known application is in front.
    void setFrontmostProcess(std::optional<platform::ProcessIdentifier> process) {
        frontmost_ = process ? std::make_shared<platform::RunningApplication>(*process) : nullptr;
    }
    /// The machine wakes from sleep. The observers are called inside this call.
    void wake() {
        const std::vector<std::function<void()>> handlers = wakeHandlers_;
        for (const std::function<void()>& handler : handlers) {
            handler();
        }
    }
    std::size_t wakeObservers() const { return wakeHandlers_.size(); }
    void releaseObservers() { wakeHandlers_.clear(); }

    bool canOpenUrls = true;
    std::vector<std::string> openedUrls;

  private:
    Journal& journal_;
    std::shared_ptr<platform::RunningApplication> frontmost_;
    std::vector<std::function<void()>> wakeHandlers_;
};

}  // namespace tarvik::simulated
