// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QEventLoop>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QWindow>
#include <array>
#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <sstream>
#include <thread>

#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/settings/FileUserDefaults.h"
#include "platform/linux/system/LinuxBundle.h"
#include "platform/linux/system/LinuxWorkspace.h"
#include "platform/linux/system/ProcessTaskLauncher.h"
#include "platform/linux/system/QtApplication.h"
#include "platform/linux/system/QtMainQueue.h"
#include "platform/linux/system/QtTimerService.h"
#include "platform/linux/system/SystemLog.h"
#include "platform/linux/system/XdgLoginItem.h"
#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/QtUserInterface.h"
#include "platform/linux/windows/QtWindow.h"
#include "tests/conformance/system/SystemWorld.h"
#include "tests/linux/system/MockLogind.h"
#include "tests/support/CapturedErrors.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

namespace {

class LinuxSystemWorld final : public SystemWorld {
  public:
    LinuxSystemWorld() {
        setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
        putRecorder(program_, arguments_);
        putRecorder(programs_ / "xdg-open", urls_);
        setenv("PATH", (programs_.string() + ":" + path_).c_str(), 1);
        userDefaults_.emplace(linuxdesktop::FileUserDefaults::standardPath(), log_);
        loginItem_.emplace(program_.string());
    }
    ~LinuxSystemWorld() override { setenv("PATH", path_.c_str(), 1); }

    platform::MainQueue& mainQueue() override { return mainQueue_; }
    platform::TimerService& timers() override { return timers_; }
    const platform::Clock& clock() override { return clock_; }
    platform::Log& log() override { return log_; }
    platform::UserDefaults& userDefaults() override { return *userDefaults_; }
    platform::Application& application() override { return application_; }
    platform::Bundle& bundle() override { return bundle_; }
    platform::TaskLauncher& taskLauncher() override { return taskLauncher_; }
    platform::Workspace& workspace() override { return workspace_; }
    platform::LoginItemService& loginItem() override { return *loginItem_; }
    platform::UserInterface& userInterface() override { return userInterface_; }

    bool runUntil(const std::function<bool()>& condition) override {
        const TimePoint deadline = clock_.now() + Seconds(10);
        // Qt carries out deleteLater() only inside a running loop.
        QEventLoop loop;
        QTimer pulse;
        bool holds = false;
        QObject::connect(&pulse, &QTimer::timeout, &loop, [&] {
            holds = condition();
            if (holds || clock_.now() > deadline) {
                loop.quit();
            }
        });
        pulse.start(1);
        loop.exec();
        return holds;
    }

    void stall(Seconds interval) override {
        const TimePoint end = clock_.now() + interval;
        while (clock_.now() < end) {
            std::this_thread::yield();
        }
    }

    void watchLog() override { errors_.emplace(); }
    std::vector<std::string> logLines() override { return errors_->linesSoFar(); }

    void reopenUserDefaults() override {
        userDefaults_.reset();
        userDefaults_.emplace(linuxdesktop::FileUserDefaults::standardPath(), log_);
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

    void bringToFront(std::optional<platform::ProcessIdentifier> process) override {
        front_ = process;
    }

    void provideSleep() override {
        logind_.emplace(folder_ / "system-bus");
        workspace_.observeDidWake([] {});
        // The subscriptions of this process have to be in force before anything is announced.
        auto isHeard = std::async(std::launch::async, [this] {
            const TimePoint deadline = clock_.now() + Seconds(10);
            bool answer = false;
            while (!answer && clock_.now() < deadline) {
                answer = logind_->isHeardBy(getpid());
            }
            return answer;
        });
        EXPECT_TRUE(runUntil([&] {
            return isHeard.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        }));
        EXPECT_TRUE(isHeard.get());
    }
    void sleepAndWake() override {
        logind_->announceSleep(true);
        logind_->announceSleep(false);
    }

    std::vector<std::string> openedUrls() override {
        std::istringstream content(contentOf(urls_));
        std::vector<std::string> urls;
        for (std::string url; std::getline(content, url);) {
            urls.push_back(url);
        }
        return urls;
    }
    void refuseUrls() override { setenv("PATH", (folder_ / "nothing").c_str(), 1); }

    // Also root cannot make a folder where a file stands, nor remove a folder as a file.
    void refuseLoginItem() override {
        std::filesystem::create_directories(folder_ /
                                            "config/autostart/com.tarvik.dictate.desktop/full");
    }

    std::vector<std::string> openMenu(platform::Menu& menu) override {
        QMenu& shown = dynamic_cast<linuxdesktop::QtMenu&>(menu).menu();
        shown.popup(QPoint(10, 10));
        std::vector<std::string> titles;
        for (const QAction* action : shown.actions()) {
            titles.push_back(action->text().replace("&&", "&").toStdString());
        }
        shown.hide();
        return titles;
    }

    bool chooseFromMenu(platform::Menu& menu, const std::string& title) override {
        for (QAction* action : dynamic_cast<linuxdesktop::QtMenu&>(menu).menu().actions()) {
            if (action->text() == QString::fromStdString(title) && action->isEnabled()) {
                action->trigger();
                return true;
            }
        }
        return false;
    }

    // Waits for the window of the alert, as a user does.
    void answerNextAlert(int button, const std::string& text) override {
        auto* timer = new QTimer(&answers_);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, button, text] {
            QWidget* alert = QApplication::activeModalWidget();
            if (alert == nullptr || !alert->isVisible()) {
                return;
            }
            timer->stop();
            alert->findChild<QLineEdit*>()->setText(QString::fromStdString(text));
            const QString title = button == 0 ? "Save" : "Cancel";
            for (QPushButton* candidate : alert->findChildren<QPushButton*>()) {
                // Without the marks of the letters that press the button with Alt.
                if (candidate->text().remove('&') == title) {
                    candidate->click();
                    return;
                }
            }
        });
        timer->start(5);
    }

    void type(platform::TextField& field, const std::string& text) override {
        auto& edit = dynamic_cast<QLineEdit&>(field);
        edit.selectAll();
        edit.insert(QString::fromStdString(text));
    }
    void press(platform::Button& button) override { dynamic_cast<QPushButton&>(button).click(); }
    void click(platform::Checkbox& checkbox) override {
        dynamic_cast<QCheckBox&>(checkbox).click();
    }
    // Does what Qt does on a window manager's request.
    void closeByHand(platform::Window& window) override {
        QWindow* handle = dynamic_cast<linuxdesktop::QtWindow&>(window).widget().windowHandle();
        QCloseEvent event;
        QApplication::sendEvent(handle, &event);
    }

  private:
    /// Makes a program that writes its arguments to `file`, one a line.
    static void putRecorder(const std::filesystem::path& program, const std::string& file) {
        putProgram(program, "printf '%s\\n' \"$@\" > '" + file + ".part'\n/bin/mv '" + file +
                                ".part' '" + file + "'\n");
    }

    TemporaryFolder folder_;
    std::filesystem::path program_ = folder_ / "program with blanks";
    std::string arguments_ = folder_ / "arguments";
    std::filesystem::path programs_ = folder_ / "programs";
    std::string urls_ = folder_ / "urls";
    std::string path_ = std::getenv("PATH");
    std::optional<platform::ProcessIdentifier> front_;
    // Both outlive their users: the log writes to standard error, the workspace listens to logind.
    std::optional<CapturedErrors> errors_;
    std::optional<MockLogind> logind_;
    int argumentCount_ = 1;
    std::string name_ = "system-conformance";
    std::array<char*, 2> argumentValues_ = {name_.data(), nullptr};

    linuxdesktop::SystemLog log_;
    linuxdesktop::MonotonicClock clock_;
    linuxdesktop::QtApplication application_{argumentCount_, argumentValues_.data(), clock_};
    linuxdesktop::QtMainQueue mainQueue_{clock_};
    linuxdesktop::QtTimerService timers_{clock_};
    std::optional<linuxdesktop::FileUserDefaults> userDefaults_;
    linuxdesktop::ProcessTaskLauncher taskLauncher_;
    linuxdesktop::LinuxBundle bundle_;
    linuxdesktop::LinuxWorkspace workspace_{[this] { return front_; },
                                            [](linuxdesktop::SettingsPanel) { return true; },
                                            taskLauncher_, clock_, log_};
    std::optional<linuxdesktop::XdgLoginItem> loginItem_;
    linuxdesktop::QtUserInterface userInterface_{clock_, log_};
    QObject answers_;
};

}  // namespace

std::unique_ptr<SystemWorld> makeRealSystemWorld() {
    return std::make_unique<LinuxSystemWorld>();
}

std::unique_ptr<LoopWorld> makeRealLoopWorld() {
    return makeRealSystemWorld();
}

}  // namespace tarvik::tests
