// SPDX-License-Identifier: MIT

#include "platform/linux/settings/SettingsFile.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/linux/settings/AtomicFile.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr int maxSetAside = 100;

}  // namespace

SettingsFile::SettingsFile(std::string path, platform::Log& log)
    : path_(std::move(path)), log_(&log) {}

void SettingsFile::load() {
    for (const std::string& place : {folderOf(path_), path_}) {
        if (const std::optional<Error> failure = closeToOthers(place)) {
            report("TarvikDictate: settings are not for the user alone: " +
                   failure->localizedDescription);
        }
    }
    bool isUsable = true;
    std::optional<IniDocument> document = read(isUsable);
    if (document) {
        const std::lock_guard lock(mutex_);
        document_ = std::move(*document);
    }
}

std::optional<IniDocument> SettingsFile::read(bool& isUsable) {
    const Result<std::optional<std::string>> content = readWholeFile(path_);
    if (!content) {
        isUsable = content.error().code != EISDIR && content.error().code != EINVAL;
        if (isUsable) {
            setAside(content.error().localizedDescription);
        } else {
            reportFailure(content.error().localizedDescription);
        }
        return std::nullopt;
    }
    if (!content.value()) {
        return std::nullopt;
    }
    Result<IniDocument> document = IniDocument::parse(*content.value());
    if (!document) {
        setAside(document.error().localizedDescription);
        return std::nullopt;
    }
    return std::move(document).value();
}

void SettingsFile::setAside(const std::string& reason) {
    for (int number = 1; number <= maxSetAside; ++number) {
        const std::string name =
            path_ + ".corrupt" + (number > 1 ? "-" + std::to_string(number) : "");
        if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) {
            report("TarvikDictate: settings file " + path_ + " cannot be used (" + reason +
                   "); it was set aside as " + name);
            return;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    report("TarvikDictate: settings file " + path_ + " cannot be used (" + reason +
           ") and not be set aside: " + std::strerror(errno));
}

void SettingsFile::save() {
    std::unique_lock lock(mutex_);
    isSaveArranged_ = false;
    const Changes changes = unsaved_;
    IniDocument saved = document_;
    lock.unlock();

    bool isUsable = true;
    if (std::optional<IniDocument> present = read(isUsable)) {
        saved = std::move(*present);
        for (const auto& [key, value] : changes) {
            saved.set(key, value);
        }
    }
    if (!isUsable) {
        return;
    }
    if (const std::optional<Error> failure =
            replaceFile(path_, saved.content(), 0600, 0700, Durability::disk)) {
        reportFailure(failure->localizedDescription);
        return;
    }
    lastFailure_.clear();
    finishSave(std::move(saved), changes);
}

// Changes that were made while the file was written stay unsaved: they have arranged for a save()
// of their own.
void SettingsFile::finishSave(IniDocument saved, const Changes& changes) {
    const std::lock_guard lock(mutex_);
    for (const auto& [key, value] : changes) {
        const auto present = unsaved_.find(key);
        if (present != unsaved_.end() && present->second == value) {
            unsaved_.erase(present);
        }
    }
    for (const auto& [key, value] : unsaved_) {
        saved.set(key, value);
    }
    document_ = std::move(saved);
}

void SettingsFile::closeLog() {
    const std::lock_guard lock(logMutex_);
    log_ = nullptr;
}

void SettingsFile::reportUnreadable(std::string_view key) {
    {
        const std::lock_guard lock(logMutex_);
        if (!unreadable_.emplace(key).second) {
            return;
        }
    }
    report("TarvikDictate: the setting " + std::string(key) + " is no text that can be read");
}

void SettingsFile::report(const std::string& line) {
    const std::lock_guard lock(logMutex_);
    if (log_ != nullptr) {
        log_->write(line);
    }
}

// A disk that stays full costs one line, and not one for every change.
void SettingsFile::reportFailure(const std::string& failure) {
    if (failure != lastFailure_) {
        lastFailure_ = failure;
        report("TarvikDictate: settings cannot be saved, the earlier ones are kept: " + failure);
    }
}

std::optional<std::string> SettingsFile::value(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    return document_.value(key);
}

bool SettingsFile::set(std::string_view key, const std::optional<std::string>& value) {
    const std::lock_guard lock(mutex_);
    document_.set(key, value);
    unsaved_.insert_or_assign(std::string(key), value);
    return !std::exchange(isSaveArranged_, true);
}

}  // namespace tarvik::linuxdesktop
