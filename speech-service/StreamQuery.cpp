// SPDX-License-Identifier: MIT

#include "speech-service/StreamQuery.h"

#include <charconv>
#include <map>
#include <optional>

#include "speech-service/Json.h"

namespace tarvik::service {

namespace {

constexpr int minSampleRate = 8000;
constexpr int maxSampleRate = 192000;

using Parameters = std::map<std::string, std::string, std::less<>>;

std::optional<char> hexByte(std::string_view digits) {
    unsigned value = 0;
    const auto [end, status] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || status != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return static_cast<char>(value);
}

// A '%' without two hexadecimal digits stays as it is, as in browsers.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::optional<char> escaped =
            text[i] == '%' ? hexByte(text.substr(i + 1, 2)) : std::nullopt;
        if (escaped) {
            decoded += *escaped;
            i += 2;
        } else {
            decoded += text[i] == '+' ? ' ' : text[i];
        }
    }
    return decoded;
}

Parameters parametersOf(std::string_view query) {
    Parameters parameters;
    while (!query.empty()) {
        const std::size_t length = query.find('&');
        const std::string_view item = query.substr(0, length);
        const std::size_t equals = item.find('=');
        const std::string_view value =
            equals == std::string_view::npos ? std::string_view() : item.substr(equals + 1);
        parameters.insert_or_assign(percentDecoded(item.substr(0, equals)), percentDecoded(value));
        query = length == std::string_view::npos ? std::string_view() : query.substr(length + 1);
    }
    return parameters;
}

const std::string* find(const Parameters& parameters, std::string_view name) {
    const auto found = parameters.find(name);
    return found == parameters.end() ? nullptr : &found->second;
}

std::optional<int> wholeNumber(std::string_view text) {
    int number = 0;
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (status != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

Error badParameter(std::string_view name, std::string_view value, std::string_view allowed) {
    return {400, "Invalid value " + jsonString(value) + " for the parameter " + std::string(name) +
                     ": " + std::string(allowed)};
}

Error missingParameter(std::string_view name, std::string_view allowed) {
    return {400, "The parameter " + std::string(name) + " is missing: " + std::string(allowed)};
}

std::optional<Error> checkEncoding(const Parameters& parameters) {
    constexpr std::string_view allowed = "this service understands linear16";
    const std::string* encoding = find(parameters, "encoding");
    if (!encoding) {
        return missingParameter("encoding", allowed);
    }
    if (*encoding != "linear16") {
        return badParameter("encoding", *encoding, allowed);
    }
    return std::nullopt;
}

std::optional<Error> checkChannels(const Parameters& parameters) {
    const std::string* channels = find(parameters, "channels");
    if (channels && wholeNumber(*channels) != 1) {
        return badParameter("channels", *channels, "this service understands one channel");
    }
    return std::nullopt;
}

std::optional<Error> checkLanguage(const Parameters& parameters) {
    const std::string* language = find(parameters, "language");
    if (language && *language != "en" && !language->starts_with("en-")) {
        return badParameter("language", *language, "this service understands English");
    }
    return std::nullopt;
}

Result<int> sampleRateOf(const Parameters& parameters) {
    constexpr std::string_view allowed = "a whole number of hertz from 8000 to 192000";
    const std::string* text = find(parameters, "sample_rate");
    if (!text) {
        return missingParameter("sample_rate", allowed);
    }
    const std::optional<int> rate = wholeNumber(*text);
    if (!rate || *rate < minSampleRate || *rate > maxSampleRate) {
        return badParameter("sample_rate", *text, allowed);
    }
    return *rate;
}

Result<bool> flagOf(const Parameters& parameters, std::string_view name) {
    const std::string* text = find(parameters, name);
    if (text && *text != "true" && *text != "false") {
        return badParameter(name, *text, "true or false");
    }
    return text && *text == "true";
}

}  // namespace

Result<StreamQuery> parseStreamQuery(std::string_view query) {
    const Parameters parameters = parametersOf(query);
    for (const auto check : {checkEncoding, checkChannels, checkLanguage}) {
        if (std::optional<Error> error = check(parameters)) {
            return *std::move(error);
        }
    }
    const Result<int> sampleRate = sampleRateOf(parameters);
    if (!sampleRate) {
        return sampleRate.error();
    }
    const Result<bool> interimResults = flagOf(parameters, "interim_results");
    const Result<bool> smartFormat = flagOf(parameters, "smart_format");
    const Result<bool> punctuate = flagOf(parameters, "punctuate");
    for (const Result<bool>* flag : {&interimResults, &smartFormat, &punctuate}) {
        if (!*flag) {
            return flag->error();
        }
    }
    return StreamQuery{sampleRate.value(), interimResults.value(),
                       smartFormat.value() || punctuate.value()};
}

}  // namespace tarvik::service
