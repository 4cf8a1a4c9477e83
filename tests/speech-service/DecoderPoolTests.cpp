// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "speech-service/DecoderPool.h"
#include "tests/speech-service/ScriptedEngine.h"

namespace tarvik::service {

namespace {

class Pool : public testing::Test {
  protected:
    const std::shared_ptr<ScriptedEngine> engine_ = std::make_shared<ScriptedEngine>();
    const std::shared_ptr<DecoderPool> pool_ = DecoderPool::create(engine_);
};

TEST_F(Pool, LendsThePreparedDecoder) {
    EXPECT_FALSE(pool_->prepare());
    EXPECT_EQ(engine_->loaded(), 1);
    EXPECT_TRUE(pool_->acquire());
    EXPECT_TRUE(pool_->acquire());
    EXPECT_EQ(engine_->loaded(), 1);
}

TEST_F(Pool, LoadsAsManyAsAreLentAtOnceAndKeepsTwo) {
    {
        std::vector<Result<DecoderPool::Lease>> leases;
        for (int i = 0; i < 5; ++i) {
            leases.push_back(pool_->acquire());
        }
        EXPECT_EQ(engine_->alive(), 5);
    }
    EXPECT_EQ(engine_->alive(), 2);
    EXPECT_EQ(pool_->readyCount(), 2U);
}

TEST_F(Pool, FreesTheSecondDecoderWhenNobodyNeedsItAnyMore) {
    { const auto leases = std::pair(pool_->acquire(), pool_->acquire()); }
    EXPECT_EQ(engine_->alive(), 2);
    pool_->releaseIdle(Seconds(60));
    EXPECT_EQ(engine_->alive(), 2);
    pool_->releaseIdle(Seconds(0));
    EXPECT_EQ(engine_->alive(), 1);
    pool_->releaseIdle(Seconds(0));
    EXPECT_EQ(engine_->alive(), 1);
}

TEST_F(Pool, TellsWhyNoDecoderLoads) {
    engine_->failLoading();
    const std::optional<Error> error = pool_->prepare();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription, "The script has no model");
    EXPECT_FALSE(pool_->acquire());
}

TEST_F(Pool, LivesAsLongAsALease) {
    std::shared_ptr<DecoderPool> pool = DecoderPool::create(engine_);
    {
        const Result<DecoderPool::Lease> lease = pool->acquire();
        pool.reset();
        EXPECT_EQ(engine_->alive(), 1);
    }
    EXPECT_EQ(engine_->alive(), 0);
}

}  // namespace

}  // namespace tarvik::service
