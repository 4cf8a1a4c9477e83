// SPDX-License-Identifier: MIT

#import <AppKit/AppKit.h>
#include <fcntl.h>
#include <unistd.h>

#include <optional>
#include <sstream>

#import "platform/macos/Strings.h"
#import "platform/macos/settings/StandardUserDefaults.h"
#import "platform/macos/system/CocoaApplication.h"
#import "platform/macos/system/MacWorkspace.h"
#import "platform/macos/system/MainAppLoginItem.h"
#import "platform/macos/system/MainBundle.h"
#import "platform/macos/system/ProcessTaskLauncher.h"
#import "platform/macos/system/SystemLog.h"
#import "platform/macos/windows/CocoaMenu.h"
#import "platform/macos/windows/CocoaUserInterface.h"
#import "platform/macos/windows/CocoaView.h"
#include "tests/conformance/system/SystemWorld.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

using macdesktop::nsString;
using macdesktop::utf8;

/// Standard error goes to a file while the object lives. The system's log writes there, too.
class CapturedLog {
  public:
    explicit CapturedLog(const std::string& path) : path_(path), saved_(dup(STDERR_FILENO)) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~CapturedLog() {
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// The complete lines so far, without the system's "DATE TIME PROGRAM[NUMBERS] ".
    std::vector<std::string> lines() const {
        std::vector<std::string> result;
        std::istringstream stream(contentOf(path_));
        for (std::string line; std::getline(stream, line) && !stream.eof();) {
            const std::size_t prefix = line.find("] ");
            result.push_back(prefix == std::string::npos ? line : line.substr(prefix + 2));
        }
        return result;
    }

  private:
    std::string path_;
    int saved_;
};

/// The first view below `root` of this class that the condition accepts; nil without one.
template <typename Condition>
id findView(NSView* root, Class wanted, Condition condition) {
    for (NSView* view in root.subviews) {
        if ([view isKindOfClass:wanted] && condition(view)) {
            return view;
        }
        if (const id found = findView(view, wanted, condition)) {
            return found;
        }
    }
    return nil;
}

template <typename View>
NSView* nsViewOf(View& view) {
    return dynamic_cast<macdesktop::CocoaView&>(view).nsView();
}

// The answer that waits for an alert. Returns whether the alert was there.
bool answerAlert(NSString* button, NSString* text) {
    NSView* content = NSApp.modalWindow.contentView;
    NSTextField* field =
        findView(content, [NSTextField class], [](id view) { return bool([view isEditable]); });
    NSButton* pressed = findView(content, [NSButton class], [button](id view) {
        return bool([[view title] isEqualToString:button]);
    });
    if (field == nil || pressed == nil) {
        return false;
    }
    [field setStringValue:text];
    [pressed performClick:nil];
    return true;
}

/// The services of macOS as far as they need no permission. What the user would do with a mouse is
/// sent to AppKit as a message.
class MacSystemWorld final : public SystemWorld {
  public:
    MacSystemWorld() {
        application_.setActivationPolicy(platform::ActivationPolicy::accessory);
        [NSUserDefaults.standardUserDefaults
            removePersistentDomainForName:NSProcessInfo.processInfo.processName];
        putProgram(program_, "printf '%s\\n' \"$@\" > '" + arguments_ + ".part'\n/bin/mv '" +
                                 arguments_ + ".part' '" + arguments_ + "'\n");
    }

    platform::MainQueue& mainQueue() override { return loop_->mainQueue(); }
    platform::TimerService& timers() override { return loop_->timers(); }
    const platform::Clock& clock() override { return loop_->clock(); }
    bool runUntil(const std::function<bool()>& condition) override {
        return loop_->runUntil(condition);
    }
    void stall(Seconds interval) override { loop_->stall(interval); }

    platform::Log& log() override { return log_; }
    platform::UserDefaults& userDefaults() override { return *userDefaults_; }
    platform::Application& application() override { return application_; }
    platform::Bundle& bundle() override { return bundle_; }
    platform::TaskLauncher& taskLauncher() override { return taskLauncher_; }
    platform::Workspace& workspace() override { return workspace_; }
    platform::LoginItemService& loginItem() override { return loginItem_; }
    platform::UserInterface& userInterface() override { return userInterface_; }

    void watchLog() override { captured_.emplace(folder_ / "log"); }
    std::vector<std::string> logLines() override { return captured_->lines(); }

    void reopenUserDefaults() override {
        [NSUserDefaults.standardUserDefaults synchronize];
        userDefaults_.emplace();
    }

    std::string goodProgram() override { return program_; }
    std::string missingProgram() override { return folder_ / "missing"; }
    void refuseLaunch() override {}
    bool wasLaunched(const std::vector<std::string>& arguments) override {
        std::string lines;
        for (const std::string& argument : arguments) {
            lines += argument + "\n";
        }
        return contentOf(arguments_) == lines;
    }

    void provideSleep() override {}
    void sleepAndWake() override {
        NSWorkspace* workspace = NSWorkspace.sharedWorkspace;
        [workspace.notificationCenter postNotificationName:NSWorkspaceDidWakeNotification
                                                    object:workspace];
    }

    // The suites that would need these belong to a user: they would open a browser, put windows of
    // other programs in front, and change the login items.
    void bringToFront(std::optional<platform::ProcessIdentifier>) override { std::abort(); }
    std::vector<std::string> openedUrls() override { std::abort(); }
    void refuseUrls() override { std::abort(); }
    void refuseLoginItem() override { std::abort(); }

    std::vector<std::string> openMenu(platform::Menu& menu) override {
        NSMenu* shown = nsMenuOf(menu);
        [shown.delegate menuNeedsUpdate:shown];
        std::vector<std::string> titles;
        for (NSMenuItem* item in shown.itemArray) {
            titles.push_back(utf8(item.title));
        }
        return titles;
    }

    bool chooseFromMenu(platform::Menu& menu, const std::string& title) override {
        NSMenu* shown = nsMenuOf(menu);
        const NSInteger index = [shown indexOfItemWithTitle:nsString(title)];
        if (index < 0 || ![shown itemAtIndex:index].enabled) {
            return false;
        }
        [shown performActionForItemAtIndex:index];
        return true;
    }

    // Waits for the window of the alert, as a user does.
    void answerNextAlert(int button, const std::string& text) override {
        NSString* title = button == 0 ? @"Save" : @"Cancel";
        NSString* typed = nsString(text);
        NSTimer* timer = [NSTimer timerWithTimeInterval:0.005
                                                repeats:YES
                                                  block:^(NSTimer* running) {
                                                    if (answerAlert(title, typed)) {
                                                        [running invalidate];
                                                    }
                                                  }];
        [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    }

    void type(platform::TextField& field, const std::string& text) override {
        [static_cast<NSTextField*>(nsViewOf(field)) setStringValue:nsString(text)];
    }
    void press(platform::Button& button) override {
        sendAction(static_cast<NSButton*>(nsViewOf(button)));
    }
    void click(platform::Checkbox& checkbox) override {
        auto* button = static_cast<NSButton*>(nsViewOf(checkbox));
        [button setNextState];
        sendAction(button);
    }
    // Each test shows one window.
    void closeByHand(platform::Window& /*window*/) override {
        for (NSWindow* shown in NSApp.windows) {
            if (shown.visible) {
                [shown performClose:nil];
            }
        }
    }

  private:
    // As a click does, and also for a button without a window.
    static void sendAction(NSButton* button) { [button sendAction:button.action to:button.target]; }

    static NSMenu* nsMenuOf(platform::Menu& menu) {
        return dynamic_cast<macdesktop::CocoaMenu&>(menu).nsMenu();
    }

    TemporaryFolder folder_;
    std::string program_ = folder_ / "program with blanks";
    std::string arguments_ = folder_ / "arguments";
    std::optional<CapturedLog> captured_;
    std::unique_ptr<LoopWorld> loop_ = makeRealLoopWorld();

    macdesktop::SystemLog log_;
    macdesktop::CocoaApplication application_;
    std::optional<macdesktop::StandardUserDefaults> userDefaults_{std::in_place};
    macdesktop::MainBundle bundle_;
    macdesktop::ProcessTaskLauncher taskLauncher_;
    macdesktop::MainAppLoginItem loginItem_;
    macdesktop::MacWorkspace workspace_{log_};
    macdesktop::CocoaUserInterface userInterface_;
};

}  // namespace

std::unique_ptr<SystemWorld> makeRealSystemWorld() {
    return std::make_unique<MacSystemWorld>();
}

}  // namespace tarvik::tests
