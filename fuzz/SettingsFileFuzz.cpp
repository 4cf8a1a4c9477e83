// SPDX-License-Identifier: MIT
// The settings file: a file is kept byte for byte, one change changes one entry, and every text
// comes back as it was set.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Promise.h"
#include "fuzz/Utf8.h"
#include "platform/linux/settings/IniDocument.h"
#include "platform/linux/settings/IniEncoding.h"

namespace {

using namespace tarvik;
using namespace tarvik::linuxdesktop;
using fuzz::promise;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// What the application reads: its own keys, and one that it never had.
constexpr const char* keys[] = {"deepgramApiKey", "deepgramHost", "totalDictationSeconds",
                                "ctaTenMinuteShown", "absent"};

bool isText(std::string_view bytes) {
    return fuzz::isUtf8(bytes) && bytes.find('\0') == std::string_view::npos;
}

std::optional<std::string> textOf(const IniDocument& document, std::string_view key) {
    const auto value = document.value(key);
    return value ? decodeIniValue(*value) : std::nullopt;
}

IniDocument reread(const IniDocument& document) {
    auto parsed = IniDocument::parse(document.content());
    promise(bool(parsed), "a file that was written can be read");
    return std::move(parsed).value();
}

void checkTexts(const std::string& key, const std::string& text) {
    promise(decodeIniValue(encodeIniValue(text)) == text, "a text comes back");
    promise(decodeIniKey(encodeIniKey(key)) == key, "a key comes back");
    promise(encodeIniValue(text).find('\n') == std::string::npos, "a value is one line");
    IniDocument document;
    document.set(key, encodeIniValue(text));
    promise(textOf(reread(document), key) == text, "a setting comes back from an empty file");
}

void checkChange(const IniDocument& original, const std::string& key, const std::string& text) {
    IniDocument changed = original;
    changed.set(key, encodeIniValue(text));
    const IniDocument written = reread(changed);
    promise(textOf(changed, key) == text, "a setting is read back before it is saved");
    promise(textOf(written, key) == text, "a setting comes back from the file");
    IniDocument removed = written;
    removed.set(key, std::nullopt);
    promise(!removed.value(key), "a removed setting is gone");
    promise(!reread(removed).value(key), "a removed setting is gone from the file");
    for (const char* other : keys) {
        if (other != key) {
            promise(written.value(other) == original.value(other), "another setting stays");
            promise(removed.value(other) == original.value(other), "another setting stays");
        }
    }
}

void checkFile(const std::string& content, const std::string& key, const std::string& text) {
    const auto parsed = IniDocument::parse(content);
    promise(!parsed || isText(content), "a file that is no text is refused");
    if (!parsed) {
        return;
    }
    // A second mark belongs to the first line, and a reader would take it for the mark of the file.
    const std::string rest = content.substr(content.starts_with(byteOrderMark) ? 3 : 0);
    promise(parsed.value().content() == (rest.starts_with(byteOrderMark) ? content : rest),
            "a file is kept byte for byte");
    for (const char* name : keys) {
        const auto found = textOf(parsed.value(), name);
        promise(!found || fuzz::isUtf8(*found), "a setting is UTF-8");
        promise(!found || found->find('\0') == std::string::npos, "a setting has no zero byte");
        checkChange(parsed.value(), name, text);
    }
    checkChange(parsed.value(), key, text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::string key = input.ConsumeRandomLengthString(40);
    std::string text = input.ConsumeRandomLengthString(200);
    const std::string content = input.ConsumeRemainingBytesAsString();
    if (key.empty() || !isText(key)) {
        key = "key";
    }
    if (!isText(text)) {
        text = "text";
    }
    checkTexts(key, text);
    checkFile(content, key, text);
    return 0;
}
