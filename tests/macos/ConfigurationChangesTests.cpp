// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "platform/macos/audio/ConfigurationChanges.h"

namespace tarvik::macdesktop {

namespace {

/// Keeps its blocks until run().
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

class ConfigurationChangesTest : public testing::Test {
  protected:
    struct Engine {
        bool isRunning = false;
    };

    void add(const Engine& engine) {
        changes_->add(&engine, [&engine] { return engine.isRunning; });
    }

    CollectingQueue queue_;
    std::shared_ptr<ConfigurationChanges> changes_ = std::make_shared<ConfigurationChanges>(queue_);
    int calls_ = 0;
    std::unique_ptr<platform::AudioObservation> observation_ =
        changes_->observe([this] { ++calls_; });
    Engine engine_;
};

TEST_F(ConfigurationChangesTest, SeveralReportsAreOneCallOnTheMainThread) {
    add(engine_);
    changes_->report(&engine_);
    changes_->report(&engine_);
    EXPECT_EQ(calls_, 0);
    queue_.run();
    EXPECT_EQ(calls_, 1);
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 2);
}

TEST_F(ConfigurationChangesTest, AReportOfARunningEngineDoesNotCount) {
    add(engine_);
    engine_.isRunning = true;
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 0);
    engine_.isRunning = false;
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 1);
}

TEST_F(ConfigurationChangesTest, AReportOfAnEngineThatIsBeingStartedDoesNotCount) {
    add(engine_);
    changes_->report(&engine_);
    engine_.isRunning = true;
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

TEST_F(ConfigurationChangesTest, AReportOfAReplacedEngineDoesNotCount) {
    add(engine_);
    changes_->report(&engine_);
    changes_->remove(&engine_);
    Engine next;
    add(next);
    queue_.run();
    EXPECT_EQ(calls_, 0);
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

TEST_F(ConfigurationChangesTest, AnEngineIsStaleFromItsReportOn) {
    EXPECT_FALSE(changes_->isStale(&engine_));
    add(engine_);
    EXPECT_FALSE(changes_->isStale(&engine_));
    engine_.isRunning = true;
    changes_->report(&engine_);
    EXPECT_TRUE(changes_->isStale(&engine_));
    queue_.run();
    EXPECT_TRUE(changes_->isStale(&engine_));
    Engine next;
    add(next);
    EXPECT_FALSE(changes_->isStale(&next));
    changes_->remove(&engine_);
    EXPECT_FALSE(changes_->isStale(&engine_));
    add(engine_);
    EXPECT_FALSE(changes_->isStale(&engine_));
}

TEST_F(ConfigurationChangesTest, AnEngineIsStaleFromItsFailureOnAndNobodyIsTold) {
    changes_->fail(&engine_);
    add(engine_);
    EXPECT_FALSE(changes_->isStale(&engine_));
    changes_->fail(&engine_);
    EXPECT_TRUE(changes_->isStale(&engine_));
    changes_->remove(&engine_);
    Engine next;
    add(next);
    EXPECT_FALSE(changes_->isStale(&next));
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

TEST_F(ConfigurationChangesTest, AReportOfAStoppedEngineCountsAmongRunningEngines) {
    Engine running{true};
    add(running);
    add(engine_);
    changes_->report(&running);
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 1);
}

TEST_F(ConfigurationChangesTest, NothingIsCalledOnceTheObservationIsDropped) {
    add(engine_);
    changes_->report(&engine_);
    observation_.reset();
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

TEST_F(ConfigurationChangesTest, AReportInsideTheHandlerIsACallOfItsOwn) {
    add(engine_);
    observation_ = changes_->observe([this] {
        if (++calls_ == 1) {
            changes_->report(&engine_);
        }
    });
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(calls_, 1);
    queue_.run();
    EXPECT_EQ(calls_, 2);
}

TEST_F(ConfigurationChangesTest, TheHandlerMayReplaceTheEngineAndDropItsObservation) {
    add(engine_);
    Engine next{true};
    auto held = std::make_shared<int>(7);
    int seen = 0;
    observation_ = changes_->observe([this, held, &next, &seen] {
        changes_->remove(&engine_);
        add(next);
        observation_.reset();
        seen = *held;
    });
    held.reset();
    changes_->report(&engine_);
    queue_.run();
    EXPECT_EQ(seen, 7);
}

TEST_F(ConfigurationChangesTest, AReportMayOutliveItsReceiver) {
    add(engine_);
    changes_->report(&engine_);
    changes_.reset();
    queue_.run();
    EXPECT_EQ(calls_, 0);
}

}  // namespace

}  // namespace tarvik::macdesktop
