#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "platform/macos/PendingCall.h"

namespace tarvik::macdesktop {

namespace {

class CollectingQueue final : public platform::MainQueue {
  public:
    void async(std::function<void()> block) override { blocks_.push_back(std::move(block)); }
    void asyncAfter(Seconds, std::function<void()>) override {
        ADD_FAILURE() << "nothing is to be delayed";
    }

    void run() {
        for (const std::function<void()>& block : std::exchange(blocks_, {})) {
            block();
        }
    }

  private:
    std::vector<std::function<void()>> blocks_;
};

class PendingCallTest : public testing::Test {
  protected:
    CollectingQueue queue_;
    int calls_ = 0;
    std::shared_ptr<PendingCall> call_ =
        std::make_shared<PendingCall>(queue_, [this] { ++calls_; });
};

TEST_F(PendingCallTest, ABurstIsOneCallOnTheMainThread) {
    PendingCall::request(call_);
    PendingCall::request(call_);
    EXPECT_EQ(calls_, 0);
    queue_.run();
    EXPECT_EQ(calls_, 1);
    PendingCall::request(call_);
    queue_.run();
    EXPECT_EQ(calls_, 2);
}

TEST_F(PendingCallTest, NothingIsCalledOnceItIsCancelled) {
    PendingCall::request(call_);
    call_->cancel();
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

TEST_F(PendingCallTest, ARequestInsideTheHandlerIsACallOfItsOwn) {
    std::shared_ptr<PendingCall> call;
    int calls = 0;
    call = std::make_shared<PendingCall>(queue_, [&] {
        if (++calls == 1) {
            PendingCall::request(call);
        }
    });
    PendingCall::request(call);
    queue_.run();
    EXPECT_EQ(calls, 1);
    queue_.run();
    EXPECT_EQ(calls, 2);
}

TEST_F(PendingCallTest, TheHandlerMayCancel) {
    std::shared_ptr<PendingCall> call;
    auto held = std::make_shared<int>(7);
    int seen = 0;
    call = std::make_shared<PendingCall>(queue_, [&, held] {
        call->cancel();
        seen = *held;
    });
    held.reset();
    PendingCall::request(call);
    queue_.run();
    EXPECT_EQ(seen, 7);
}

}  // namespace

}  // namespace tarvik::macdesktop
