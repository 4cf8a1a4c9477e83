// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/HotKeyMeans.h"
#include "platform/linux/input/HotKeyNotifier.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/input/XProgramHost.h"
#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/FrontWindow.h"
#include "platform/linux/x11/XServer.h"
#include "platform/linux/x11/XcbConnection.h"
#include "platform/linux/x11/XcbConnector.h"

namespace tarvik::linuxdesktop {

class X11Session;

/// Hotkeys as grabs of XInput 2, typing through XTEST, and the window in front, of one X server.
///
/// The three share one connection and one thread, which sleeps until the server or the main thread
/// wants something. Main thread only, unless a line says otherwise.
class X11Input final : public HotKeyMeans, public TypingMeans, public FrontMeans, public XServer {
  public:
    /// Hears on the input thread, or in the call that opens, whether the server serves. Once.
    using OnServerAnswer = std::function<void(const std::optional<std::string>& refusal)>;

    /// Connects to the server of an X11 session, which DISPLAY names, and waits 1 s at the most. A
    /// server that answers later is used from then on. The references outlive the object.
    /// `listener` and `onLift` may be empty.
    static std::shared_ptr<X11Input> openSession(platform::MainQueue& mainQueue, platform::Log& log,
                                                 std::weak_ptr<HotKeyListener> listener,
                                                 OnLift onLift);
    /// As openSession(), for the server of the X programs of a Wayland session, which hears no
    /// hotkeys and sees X programs only. Does not wait. `host` and `holds` may be empty.
    static std::shared_ptr<X11Input> openXwayland(platform::MainQueue& mainQueue,
                                                  platform::Log& log,
                                                  std::shared_ptr<XProgramHost> host,
                                                  std::shared_ptr<XHoldListener> holds,
                                                  OnServerAnswer onAnswer);
    /// Ends the thread, puts the keyboard map back and drops the hotkeys. Text that was taken
    /// before is typed first, as far as its targets take it within 0.8 s. Takes 1 s at the most.
    ~X11Input() override;
    X11Input(const X11Input&) = delete;
    X11Input& operator=(const X11Input&) = delete;

    /// Why the server does not serve: there is none, an extension is missing, it is of the other
    /// kind, or the system has no thread left. Nothing is to be registered or typed
    /// then. Empty while it serves, and while it has not answered yet.
    std::optional<std::string> refusal() const override;

    bool isAvailable() const override { return isConnected_; }
    /// Whether the server has served and is gone. Any thread.
    bool isGone() const override { return isGone_; }

    /// A combination that another program has stays refused: the server does not tell when the
    /// program gives the combination up.
    platform::OSStatus registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                      std::uint32_t modifiers) override;
    void unregisterHotKey(HotKeyNumber number) override;
    /// Nothing is left to do: typing of the same session names the request that lifts each key,
    /// and no other means types in the session of an X server.
    void expectLift(std::uint32_t /*modifiers*/) override {}

    void type(TypedText text, std::function<void()> onDone) override;
    void typeInto(xcb_window_t window, TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// Answers what was noticed last. Where that is a window of this process, the server is asked:
    /// the user may just have closed the window. The text goes where the server's answer says.
    std::optional<platform::ProcessIdentifier> chooseTarget() override;
    bool isElsewhere(platform::ProcessIdentifier process) const override;
    FrontWindow::Known front() const override { return front_; }
    void askFront(std::function<void(FrontWindow::Known)> onAnswer) override;

  private:
    enum class Server { session, xwayland };
    struct Options {
        Server server = Server::session;
        OnServerAnswer onAnswer;
        std::weak_ptr<HotKeyListener> listener = {};
        OnLift onLift = {};
        std::shared_ptr<XProgramHost> host = {};
        std::shared_ptr<XHoldListener> holds = {};
    };

    X11Input(platform::MainQueue& mainQueue, platform::Log& log, Options options);

    // Input thread only.
    void refreshFront();
    void run(const OnServerAnswer& onAnswer);
    void setAccompaniment(std::function<void()> accompanyAlt);
    void setFollower(XHoldListener::Follow follow);
    void drain();
    void endSession();
    void finish();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const HotKeyNotifier notifier_;
    const OnLift onLift_;
    const std::shared_ptr<XProgramHost> host_;
    const std::shared_ptr<XHoldListener> holdListener_;
    const Server server_;
    PollLoop loop_;
    Deadline endDeadline_{loop_};
    XcbConnector connector_;
    std::atomic<bool> isConnected_ = false;
    std::atomic<bool> isGone_ = false;
    std::atomic<FrontWindow::Known> front_ = FrontWindow::Known();
    // Of the last chooseTarget(). Main thread only.
    FrontWindow::Known target_;
    // What the server answered to the last chooseTarget() that found this process in front.
    std::atomic<FrontWindow::Known> insteadOfOwn_ = FrontWindow::Known();
    // Written before `hasAnswered_` is set, and never again.
    std::string refusal_;
    std::atomic<bool> hasAnswered_ = false;
    // What the main thread shuts down when the input thread waits for a server that does not
    // answer. It outlives the input thread.
    std::atomic<XcbConnection*> waitedFor_ = nullptr;
    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<X11Session> session_;
    std::unique_ptr<EventLoop::Watch> watch_;
    std::promise<void> ended_;
    std::thread thread_;
};

}  // namespace tarvik::linuxdesktop
