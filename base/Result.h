// SPDX-License-Identifier: MIT
#pragma once

#include <utility>
#include <variant>

#include "base/Error.h"

namespace tarvik {

/// Either a value, or the error that says why there is none.
template <typename Value>
class Result {
  public:
    Result(Value value) : content_(std::move(value)) {}  // NOLINT: implicit on purpose
    Result(Error error) : content_(std::move(error)) {}  // NOLINT: implicit on purpose

    /// Whether the result holds a value.
    explicit operator bool() const { return std::holds_alternative<Value>(content_); }

    /// The value. Only when the result holds one.
    const Value& value() const& { return std::get<Value>(content_); }
    Value&& value() && { return std::get<Value>(std::move(content_)); }

    /// The error. Only when the result holds one.
    const Error& error() const { return std::get<Error>(content_); }

  private:
    std::variant<Value, Error> content_;
};

}  // namespace tarvik
