// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace tarvik::linuxdesktop {

/// An engine of an input method, which sees the keys of the user in a text field for as long as
/// somebody uses the engine. Loop thread only; no operation waits.
class FieldEngine {
  public:
    /// A key that the user has pressed or released while the engine has a field.
    struct Key {
        /// As the kernel numbers keys.
        std::uint32_t code = 0;
        bool isUp = false;
        /// Whether Alt was down before the key.
        bool hasAlt = false;

        bool isAlt() const {
            constexpr std::uint32_t leftAlt = 56;
            constexpr std::uint32_t rightAlt = 100;
            return code == leftAlt || code == rightAlt;
        }
    };

    virtual ~FieldEngine() = default;

    /// Somebody uses the engine from here on, and until release(). The calls are counted.
    virtual void acquire() = 0;
    virtual void release() = 0;
    /// Whether the engine has a text field of another program.
    virtual bool hasField() const = 0;
    /// Sends a tap of Ctrl, with Alt held, to the program that has the field. The program then does
    /// not take Alt for a key that was pressed alone.
    virtual void tapControl() = 0;
};

}  // namespace tarvik::linuxdesktop
