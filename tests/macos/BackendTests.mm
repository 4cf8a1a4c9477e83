// SPDX-License-Identifier: MIT

// What services promise on macOS alone. No test needs a permission of the user's.
#import <AVFAudio/AVFAudio.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#import "platform/macos/MacPlatform.h"
#import "tests/macos/MainRunLoop.h"

namespace tarvik::macdesktop {

namespace {

constexpr std::chrono::seconds timeout(60);

class SilentDelegate final : public platform::WebSocketSessionDelegate {
  public:
    void didOpen(platform::WebSocketTask&, const std::string&) override { FAIL(); }
    void didClose(platform::WebSocketTask&, int, const std::string&) override { FAIL(); }
};

// Nothing listens on the port for discarded messages.
TEST(MacWebSocket, AReceiveLearnsOnAnotherThreadWhyThereIsNoConnection) {
    const platform::UrlRequest refused{.url = "wss://127.0.0.1:9/"};
    const platform::UrlRequest noUrl{.url = ""};
    MacPlatform mac;
    for (const platform::UrlRequest& request : {refused, noUrl}) {
        const auto delegate = std::make_shared<SilentDelegate>();
        const auto session = mac.webSockets().makeSession(delegate);
        const auto task = session->webSocketTask(request);
        std::promise<std::thread::id> failed;
        task->receive([&failed](const Result<platform::WebSocketMessage>& result) {
            EXPECT_FALSE(result);
            failed.set_value(std::this_thread::get_id());
        });
        task->resume();
        auto answer = failed.get_future();
        ASSERT_EQ(answer.wait_for(timeout), std::future_status::ready) << request.url;
        EXPECT_NE(answer.get(), std::this_thread::get_id());
        task->cancel(platform::closeCodeGoingAway);
    }
}

// The system reports the changes of every engine in the process.
TEST(MacAudio, AReportForAnEngineOfSomebodyElseIsNoChange) {
    const auto report = [] {
        [NSNotificationCenter.defaultCenter
            postNotificationName:AVAudioEngineConfigurationChangeNotification
                          object:[[AVAudioEngine alloc] init]];
    };
    int changes = 0;
    {
        MacPlatform mac;
        const auto engine = mac.audio().makeEngine();
        const auto observation = mac.audio().observeConfigurationChange([&] { ++changes; });
        report();
        bool isReportEvaluated = false;
        mac.mainQueue().async([&] { isReportEvaluated = true; });
        EXPECT_TRUE(tests::runMainLoopUntil([&] { return isReportEvaluated; }, timeout));
        EXPECT_EQ(changes, 0);
    }
    report();
    EXPECT_EQ(changes, 0);
}

TEST(MacStatusItem, HasAButtonThatShowsBothStates) {
    MacPlatform mac;
    const auto item = mac.userInterface().makeStatusItem();
    ASSERT_NE(item->button(), nullptr);
    for (const bool isRecording : {true, false}) {
        const auto image = mac.userInterface().systemSymbol(isRecording ? "mic.fill" : "mic", "x");
        ASSERT_TRUE(image);
        image->setTemplate(!isRecording);
        item->button()->setImage(image);
        item->button()->setContentTintColor(isRecording ? std::optional(platform::SystemColor::red)
                                                        : std::nullopt);
    }
    item->setMenu(mac.userInterface().makeMenu());
}

}  // namespace

}  // namespace tarvik::macdesktop
