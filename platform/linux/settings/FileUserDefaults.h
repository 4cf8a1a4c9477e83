#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "platform/linux/loop/BackgroundWorker.h"

namespace tarvik::linuxdesktop {

class SettingsFile;

/// The settings in one file of the user's, which QSettings and a text editor can read and change.
///
/// Numbers and truth values stand in the file as decimal numbers and the words true and false; a
/// text that looks like one is quoted and does not read as one. Any single value reads as text,
/// because nobody who edits the file by hand writes the quotes. Lists and QSettings' own types read
/// as absent.
///
/// Saving happens on a thread of its own, at once, with mode 0600. It changes only the entries that
/// this process has set: what somebody else has changed in the file meanwhile is kept and taken
/// over. A file that cannot be understood is set aside under another name, and the settings start
/// empty.
class FileUserDefaults final : public platform::UserDefaults {
  public:
    /// Reads the file at `path` (absolute), which need not exist. `log` outlives the object.
    FileUserDefaults(const std::string& path, platform::Log& log);
    /// Waits up to two seconds until what has been set is saved.
    ~FileUserDefaults() override;

    /// Where the application keeps its settings.
    static std::string standardPath();

    std::optional<std::string> stringForKey(std::string_view key) const override;
    std::int64_t integerForKey(std::string_view key) const override;
    bool boolForKey(std::string_view key) const override;

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
