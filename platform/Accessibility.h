// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// A status of the accessibility interface; 0 is success. The values are those of macOS.
using AXError = std::int32_t;

inline constexpr AXError axErrorSuccess = 0;
inline constexpr AXError axErrorFailure = -25200;
inline constexpr AXError axErrorIllegalArgument = -25201;
inline constexpr AXError axErrorInvalidUIElement = -25202;
/// The other program has ended, or did not answer before the deadline.
inline constexpr AXError axErrorCannotComplete = -25204;
inline constexpr AXError axErrorAttributeUnsupported = -25205;
inline constexpr AXError axErrorNotImplemented = -25208;
inline constexpr AXError axErrorAPIDisabled = -25211;
inline constexpr AXError axErrorNoValue = -25212;

inline constexpr std::string_view axFocusedUIElementAttribute = "AXFocusedUIElement";
inline constexpr std::string_view axSelectedTextAttribute = "AXSelectedText";

/// The handle of a user interface element of any program. A handle may outlive its element.
class AXUIElement {
  public:
    virtual ~AXUIElement() = default;
};

using AXUIElementRef = std::shared_ptr<AXUIElement>;

/// Reads and changes the user interface of other programs. Main thread only.
class Accessibility {
  public:
    virtual ~Accessibility() = default;

    /// The element that stands for the whole desktop. Its attribute "AXFocusedUIElement" is the
    /// element with the keyboard focus.
    virtual AXUIElementRef createSystemWide() = 0;

    /// Reads an attribute whose value is an element.
    ///
    /// The backend follows the focus, so the focused element is known without waiting: it is the
    /// element that had the focus before a hotkey was pressed. On macOS the focus cannot be
    /// followed. There the call asks the frontmost program and waits up to 0.5 s.
    virtual AXError copyAttributeValue(const AXUIElementRef& element, std::string_view attribute,
                                       AXUIElementRef* outValue) = 0;

    /// Writes a text attribute. "AXSelectedText" replaces the selection, or inserts at the caret
    /// when nothing is selected.
    ///
    /// Success means that the text is known to have arrived: it stands in the element. Where a
    /// program does not let its text be read, the length of the text has grown accordingly. An
    /// error means that the caller has to type the text. A program that has not replied in time may
    /// still insert the text. The backend then keeps the typed text back, and drops it once the
    /// text has arrived. Further texts for the program get an error at once; the backend keeps them
    /// back as well, and writes them behind the first text. On macOS success is what the other
    /// program reports, and nothing is kept back. The call waits for the other program up to 0.5 s
    /// in all.
    ///
    /// A program that failed to answer is not asked again, nor is an element that reported a false
    /// result: their writes fail at once. Reading the element as the focused one ends that, unless
    /// the program may still carry out an earlier write. On macOS only the end of the program does.
    virtual AXError setAttributeValue(const AXUIElementRef& element, std::string_view attribute,
                                      const std::string& text) = 0;

    /// Whether this application may read and change the user interface of other programs. Returns
    /// the state known so far, without waiting.
    virtual bool isProcessTrusted() = 0;
    /// Returns the same as isProcessTrusted(). With `prompt`, a missing permission is asked for:
    /// the desktop asks the user, or the backend switches the permission on where the desktop has a
    /// switch for it.
    virtual bool isProcessTrustedWithOptions(bool prompt) = 0;
};

}  // namespace tarvik::platform
