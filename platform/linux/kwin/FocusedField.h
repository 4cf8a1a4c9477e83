// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// The text field that has the keyboard, for a program that puts text into the field as an input
/// method. Loop thread only.
class FocusedField {
  public:
    /// A text says why nothing can be put into a text field.
    using OnReady = std::function<void(const std::string& refusal)>;

    virtual ~FocusedField() = default;

    /// Becomes the input method, and waits until a text field has the keyboard. `onReady` is called
    /// in this or a later turn, unless the next request comes first.
    virtual void request(OnReady onReady) = 0;
    /// Puts text into the field that has the keyboard. `onDone` is called when the compositor has
    /// handed the text on, and not at all when it ends the connection first. After a request
    /// without a refusal.
    virtual void commit(std::u32string_view text, std::function<void()> onDone) = 0;
    /// Is the input method no more.
    virtual void giveBack() = 0;
};

}  // namespace tarvik::linuxdesktop
