// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "platform/linux/loop/BackgroundWorker.h"

namespace tarvik::linuxdesktop {

class SettingsFile;

/// The settings in one file, which QSettings and a text editor can read and change. Any thread.
///
/// A number stands in the file as a decimal number, a truth value as the word true or false. A text
/// that looks like a number or a truth value is quoted, and does not read as one. Any single value
/// reads as text, because nobody who edits the file by hand writes the quotes. Lists and QSettings'
/// own types read as absent, which is reported once for each entry.
///
/// A worker saves each change at once, with mode 0600. Saving writes only the entries that this
/// process has set; changes that another program has made to the file are kept and read. A file
/// that cannot be parsed is set aside under another name, and the settings start empty.
class FileUserDefaults final : public platform::UserDefaults {
  public:
    /// Reads the file at `path` (absolute), which need not exist. A file or a folder of that file
    /// that others can open gets the mode 0600 or 0700. Waits for the disk. `log` outlives the
    /// object.
    FileUserDefaults(const std::string& path, platform::Log& log);
    /// As finish().
    ~FileUserDefaults() override;

    /// Waits up to two seconds until every change is saved. Later changes are not saved.
    void finish() { worker_.finish(); }

    /// The path of the application's settings file.
    static std::string standardPath();

    std::optional<std::string> stringForKey(std::string_view key) const override;
    std::int64_t integerForKey(std::string_view key) const override;
    bool boolForKey(std::string_view key) const override;
    bool hasObjectForKey(std::string_view key) const override;

    void setString(std::string_view value, std::string_view key) override;
    void setInteger(std::int64_t value, std::string_view key) override;
    void setBool(bool value, std::string_view key) override;
    void removeObjectForKey(std::string_view key) override;

  private:
    void set(std::string_view key, const std::optional<std::string>& value);

    std::shared_ptr<SettingsFile> file_;
    BackgroundWorker worker_;
};

}  // namespace tarvik::linuxdesktop
