// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/Log.h"
#include "platform/linux/settings/IniDocument.h"

namespace tarvik::linuxdesktop {

/// The entries of one settings file in memory, with the changes that are not saved yet. Any thread.
class SettingsFile {
  public:
    /// `log` lives until closeLog() has returned.
    SettingsFile(std::string path, platform::Log& log);

    /// Reads the file, after closing the file and its folder to other users. Waits for the disk.
    /// Called once, before everything else.
    void load();
    /// Saves the changes that are not saved yet. Waits for the disk; one thread at a time.
    void save();
    /// Ends the use of the log: later failures are not reported.
    void closeLog();

    /// The encoded value of an entry.
    std::optional<std::string> value(std::string_view key) const;
    /// Sets or removes an entry. True when the caller has to arrange for save(); false when a
    /// save() is arranged for already and has not begun.
    bool set(std::string_view key, const std::optional<std::string>& value);

    /// Reports that the value of an entry is no text that can be read; once for each entry.
    void reportUnreadable(std::string_view key);

  private:
    using Changes = std::map<std::string, std::optional<std::string>>;

    /// The entries in the file; empty when there is no file, or when it had to be set aside.
    /// `isUsable` becomes false when something stands in its place that cannot be replaced.
    std::optional<IniDocument> read(bool& isUsable);
    void setAside(const std::string& reason);
    void reportFailure(const std::string& failure);
    void report(const std::string& line);
    void finishSave(IniDocument saved, const Changes& changes);

    const std::string path_;

    mutable std::mutex mutex_;
    IniDocument document_;
    Changes unsaved_;
    bool isSaveArranged_ = false;

    /// Used by the saving thread only.
    std::string lastFailure_;

    std::mutex logMutex_;
    platform::Log* log_;
    std::set<std::string, std::less<>> unreadable_;
};

}  // namespace tarvik::linuxdesktop
