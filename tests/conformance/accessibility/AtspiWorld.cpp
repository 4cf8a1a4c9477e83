// SPDX-License-Identifier: MIT

#include "tests/conformance/accessibility/AtspiWorld.h"

#include <signal.h>

#include <utility>
#include <vector>

#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "tests/linux/accessibility/TargetProcess.h"

namespace tarvik::tests {

namespace {

std::string range(std::size_t start, std::size_t end) {
    return std::to_string(start) + ":" + std::to_string(end);
}

class AtspiTarget final : public AccessibilityTarget {
  public:
    AtspiTarget(const std::string& program, const std::vector<std::string>& options)
        : process_(program, options) {}

    pid_t identifier() const { return process_.identifier(); }
    std::string text() override { return process_.text(); }
    void select(std::size_t start, std::size_t end) override {
        EXPECT_EQ(process_.command("select " + range(start, end)), "done");
    }
    void focusButton() override { EXPECT_EQ(process_.command("button"), "done"); }
    void focusNothing() override { EXPECT_EQ(process_.command("nothing"), "done"); }
    void focusField() override { EXPECT_EQ(process_.command("widget"), "done"); }
    void hang() override { process_.send(SIGSTOP); }
    void goOn() override { process_.send(SIGCONT); }
    void die() override { process_.kill(); }

  private:
    TargetProcess process_;
};

}  // namespace

AtspiWorld::AtspiWorld(std::string program, std::string widget)
    : program_(std::move(program)), widget_(std::move(widget)) {
    restartService();
}

void AtspiWorld::restartService() {
    service_ = std::make_unique<linuxdesktop::AtspiAccessibility>(
        std::make_shared<linuxdesktop::AccessibilityWorker>(log_), mainQueue_,
        linuxdesktop::AtspiAccessibility::Input{
            [this] { return processInFront; },
            [] { return true; },
            [](platform::ProcessIdentifier) { return false; },
            {[](platform::ProcessIdentifier) { return std::nullopt; }, {}}});
    // Programs of some toolkits show themselves only while the switch is on.
    EXPECT_TRUE(
        becomesTrue([this] { return service_->isProcessTrustedWithOptions(true); }, Seconds(30)));
}

std::unique_ptr<AccessibilityTarget> AtspiWorld::open(const TargetContent& content) {
    std::vector<std::string> options{
        "--widget",   widget_,    "--text",
        content.text, "--select", range(content.selectionStart, content.selectionEnd)};
    if (content.isReadOnly) {
        options.emplace_back("--readonly");
    }
    if (content.isButtonFocused) {
        options.emplace_back("--button");
    }
    auto target = std::make_unique<AtspiTarget>(program_, options);
    processInFront = target->identifier();
    return target;
}

bool AtspiWorld::waitUntil(const std::function<bool()>& condition, Seconds timeout) {
    return becomesTrue(condition, timeout);
}

std::vector<AccessibilityWorldMaker> realAccessibilityWorlds() {
    const auto atspi = [](const std::string& name, const std::string& program,
                          const std::string& widget) {
        return AccessibilityWorldMaker{
            name, [=] { return std::make_unique<AtspiWorld>(program, widget); }};
    };
    return {atspi("Gtk3Entry", "gtk3_target.py", "entry"),
            atspi("Gtk3TextView", "gtk3_target.py", "text"),
            atspi("Gtk4Entry", "gtk4_target.py", "entry"),
            atspi("Gtk4TextView", "gtk4_target.py", "text"),
            atspi("Qt6LineEdit", "qt6_target.py", "entry"),
            atspi("Qt6PlainTextEdit", "qt6_target.py", "text")};
}

}  // namespace tarvik::tests
