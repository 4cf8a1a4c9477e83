// SPDX-License-Identifier: MIT
#pragma once

#import <Foundation/Foundation.h>

#include "platform/UserDefaults.h"

namespace tarvik::macdesktop {

/// The application's standard domain of NSUserDefaults. Text that looks like a number also reads as
/// that number.
class StandardUserDefaults final : public platform::UserDefaults {
  public:
    StandardUserDefaults();

    std::optional<std::string> stringForKey(std::string_view key) const override;
    std::int64_t integerForKey(std::string_view key) const override;
    bool boolForKey(std::string_view key) const override;
    bool hasObjectForKey(std::string_view key) const override;

    void setString(std::string_view value, std::string_view key) override;
    void setInteger(std::int64_t value, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;

  private:
    NSUserDefaults* defaults_;
};

}  // namespace tarvik::macdesktop
