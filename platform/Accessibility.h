#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarvik::platform {

/// A status of the accessibility interface; 0 is success. The values are the platform's own.
using AXError = std::int32_t;

inline constexpr AXError axErrorSuccess = 0;
inline constexpr AXError axErrorFailure = -25200;
inline constexpr AXError axErrorIllegalArgument = -25201;
inline constexpr AXError axErrorInvalidUIElement = -25202;
/// The other program did not answer in time, or is gone.
inline constexpr AXError axErrorCannotComplete = -25204;
inline constexpr AXError axErrorAttributeUnsupported = -25205;
inline constexpr AXError axErrorNotImplemented = -25208;
inline constexpr AXError axErrorAPIDisabled = -25211;
inline constexpr AXError axErrorNoValue = -25212;

inline constexpr std::string_view axFocusedUIElementAttribute = "AXFocusedUIElement";
inline constexpr std::string_view axSelectedTextAttribute = "AXSelectedText";

/// A handle of something on the screen, in any program; it may outlive what it stands for.
class AXUIElement {
  public:
    virtual ~AXUIElement() = default;
};

using AXUIElementRef = std::shared_ptr<AXUIElement>;

/// Reads and changes the user interface of other programs. Main thread only.
class Accessibility {
  public:
    virtual ~Accessibility() = default;

    /// The element that stands for the whole desktop.
    virtual AXUIElementRef createSystemWide() = 0;

    /// Reads an attribute whose value is an element. The focused element is answered at once from
    /// what has been followed so far: it is the one that had the focus before a hotkey was pressed.
    /// Where the system does not let it be followed (macOS), the program in front is asked, 0.5 s
    /// at the most.
    virtual AXError copyAttributeValue(const AXUIElementRef& element, std::string_view attribute,
                                       AXUIElementRef* outValue) = 0;

    /// Writes a text attribute; "AXSelectedText" replaces the selection (or inserts at the caret).
    /// It answers success only when the text is known to have arrived, and no success only when it
    /// is known, as far as the other program tells the truth, that it has not and will not. Waits
    /// for the other program, 0.5 s in all at the most; a program that did not answer or did not
    /// tell the truth once is refused at once from then on, while it lives.
    virtual AXError setAttributeValue(const AXUIElementRef& element, std::string_view attribute,
                                      const std::string& text) = 0;

    /// Whether this application may do all that. Answered from what is known, without waiting.
    virtual bool isProcessTrusted() = 0;
    /// The same; with `prompt`, makes the desktop ask for the permission, or switches it on where
    /// it is a switch, when it is not there.
    virtual bool isProcessTrustedWithOptions(bool prompt) = 0;
};

}  // namespace tarvik::platform
