// SPDX-License-Identifier: MIT
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tarvik::fuzz {

/// A text field on an accessibility bus, with the faults of real programs that the input chooses.
/// It does what its faults say, and answers truly otherwise. One thread at a time.
class FuzzedWidget {
  public:
    explicit FuzzedWidget(FuzzedDataProvider& input);

    /// Replies to a call that this kind of widget knows; false for any other call.
    bool handle(sd_bus_message* call, const std::string& member);

    /// Whether a write has to look at the widget after the insertion to know what happened to the
    /// text behind it. The look is not possible any more when the time is up.
    bool cutsItsEnd() const { return fault_ == Fault::cut; }

    /// The whole text, as UTF-8.
    std::string text() const { return textOf(units_); }
    /// The text without the selection, and what stands before and behind the caret in it.
    const std::string& before() const { return before_; }
    const std::string& behind() const { return behind_; }

  private:
    /// One character each, or one UTF-16 unit each.
    using Units = std::u32string;

    Units unitsOf(const std::string& text) const;
    static std::string textOf(const Units& units);
    void replyWithProperty(sd_bus_message* call);
    void replyWithText(sd_bus_message* call);
    void insert(sd_bus_message* call);
    void insertNow(std::size_t offset, const Units& inserted);
    void remove(sd_bus_message* call);
    std::size_t bounded(std::int32_t offset) const;

    enum class Fault { none, limit, cut, refusal, lie, late, unreadable, password, readOnly };

    Fault fault_ = Fault::none;
    std::string toolkit_;
    bool countsUtf16_ = false;
    Units units_;
    std::size_t caret_ = 0;
    std::size_t selectionStart_ = 0;
    std::size_t selectionEnd_ = 0;
    std::size_t limit_ = 0;
    std::string before_;
    std::string behind_;
    /// What a late widget does at the next call.
    std::function<void()> pending_;
};

}  // namespace tarvik::fuzz
