#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Log.h"
#include "platform/linux/settings/IniDocument.h"

namespace tarvik::linuxdesktop {

/// The entries of one settings file in memory, and what of them is not saved yet. Any thread.
class SettingsFile {
  public:
    /// `log` outlives the object, or closeLog() is called before.
    SettingsFile(std::string path, platform::Log& log);

    /// Reads the file. Waits for the disk; once, before anything else.
    void load();
    /// Saves what is not saved yet. Waits for the disk; one thread at a time.
    void save();
    /// From here on nothing is reported any more.
    void closeLog();

    /// The entry as it stands in a file.
    std::optional<std::string> value(std::string_view key) const;
    /// Sets or removes an entry. True when save() has to be called for it: false means that a call
    /// that has not begun yet will take care of it.
    bool set(std::string_view key, const std::optional<std::string>& value);

  private:
    using Changes = std::map<std::string, std::optional<std::string>>;

    /// What is in the file, or nothing when there is none or it had to be set aside. `isUsable`
    /// becomes false when something stands in its place that cannot be replaced.
    std::optional<IniDocument> read(bool& isUsable);
    void setAside(const std::string& reason);
    void reportFailure(const std::string& failure);
    void report(const std::string& line);
    void finishSave(IniDocument saved, const Changes& changes);

    const std::string path_;

    mutable std::mutex mutex_;
    IniDocument document_;
    Changes unsaved_;
    bool isSaveAwaited_ = false;

    /// Of the saving thread alone.
    std::string lastFailure_;

    std::mutex logMutex_;
    platform::Log* log_;
};

}  // namespace tarvik::linuxdesktop
