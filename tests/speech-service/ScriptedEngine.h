// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "speech-service/Engine.h"

namespace tarvik::service {

/// An engine that understands its own script. Any thread.
class ScriptedEngine : public Engine {
  public:
    ScriptedEngine();

    const EngineInfo& info() const override { return info_; }
    Result<std::unique_ptr<Decoder>> createDecoder() override;

    /// The words of every utterance before its end and after it. Each word takes 0.3 s.
    void understand(const std::string& hypothesis, const std::string& words);

    /// The end of an utterance blocks until letSettle() or an abort.
    void blockSettling();
    void letSettle();
    /// Blocks until the end of an utterance does.
    void awaitSettling();

    /// The end of an utterance no longer ends by an abort.
    void forbidAbort() { canAbort_ = false; }

    /// Decoding blocks after this much audio of an utterance until letSettle() or another limit.
    void blockDecodingAfter(Seconds audio);

    /// Every later createDecoder() fails.
    void failLoading() { failsLoading_ = true; }

    /// The priority of the thread that ended the last utterance: 0 is normal, 19 is lowest.
    int priority() const { return priority_; }

    int loaded() const { return loaded_; }
    int alive() const { return alive_; }
    /// The lengths of the utterances that have ended.
    std::vector<Seconds> lengths() const;

  private:
    friend class ScriptedDecoder;

    EngineInfo info_;
    std::atomic<bool> failsLoading_ = false;
    std::atomic<bool> canAbort_ = true;
    std::atomic<int> loaded_ = 0;
    std::atomic<int> alive_ = 0;
    std::atomic<int> priority_ = 0;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string hypothesis_;
    std::string words_;
    bool isSettlingBlocked_ = false;
    bool isSettling_ = false;
    Seconds decodingLimit_;
    std::vector<Seconds> lengths_;
};

}  // namespace tarvik::service
