// SPDX-License-Identifier: MIT

#include "platform/linux/settings/FileUserDefaults.h"

#include <QString>
#include <charconv>
#include <system_error>

#include "platform/linux/settings/ConfigDirectory.h"
#include "platform/linux/settings/IniEncoding.h"
#include "platform/linux/settings/SettingsFile.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds shutdownTimeout(2);

}  // namespace

FileUserDefaults::FileUserDefaults(const std::string& path, platform::Log& log)
    : file_(std::make_shared<SettingsFile>(path, log)),
      worker_("tarvik-settings", shutdownTimeout) {
    if (const auto& error = worker_.error()) {
        log.write("TarvikDictate: no thread for the settings, which are saved at once: " +
                  error->localizedDescription);
    }
    file_->load();
}

FileUserDefaults::~FileUserDefaults() {
    finish();
    file_->closeLog();
}

std::string FileUserDefaults::standardPath() {
    return configDirectory() + "/Tarvik/Tarvik Dictate.conf";
}

std::optional<std::string> FileUserDefaults::stringForKey(std::string_view key) const {
    const std::optional<std::string> value = file_->value(key);
    std::optional<std::string> text = value ? decodeIniValue(*value) : std::nullopt;
    if (value && !text) {
        file_->reportUnreadable(key);
    }
    return text;
}

std::int64_t FileUserDefaults::integerForKey(std::string_view key) const {
    const std::string value = file_->value(key).value_or("");
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(value.data(), value.data() + value.size(), number);
    return failure == std::errc() && end == value.data() + value.size() ? number : 0;
}

bool FileUserDefaults::boolForKey(std::string_view key) const {
    return file_->value(key) == "true";
}

bool FileUserDefaults::hasObjectForKey(std::string_view key) const {
    return file_->value(key).has_value();
}

void FileUserDefaults::setString(std::string_view value, std::string_view key) {
    // QString replaces invalid UTF-8, which would make the whole file unreadable.
    const QString text = QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
    set(key, encodeIniValue(text.toStdString()));
}

void FileUserDefaults::setInteger(std::int64_t value, std::string_view key) {
    set(key, std::to_string(value));
}

void FileUserDefaults::setBool(bool value, std::string_view key) {
    set(key, value ? "true" : "false");
}

void FileUserDefaults::removeObjectForKey(std::string_view key) {
    if (file_->value(key)) {
        set(key, std::nullopt);
    }
}

void FileUserDefaults::set(std::string_view key, const std::optional<std::string>& value) {
    if (file_->set(key, value)) {
        worker_.async([file = file_] { file->save(); });
    }
}

}  // namespace tarvik::linuxdesktop
