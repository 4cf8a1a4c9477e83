// SPDX-License-Identifier: MIT

#include "speech-service/StreamQuery.h"

#include <charconv>
#include <map>
#include <optional>
#include <utility>

#include "speech-service/Json.h"

namespace tarvik::service {

namespace {

constexpr int minSampleRate = 8000;
constexpr int maxSampleRate = 192000;
// A shorter pause may be the closed lips inside a word.
constexpr int minEndpointing = 200;
// Interim words come every half second.
constexpr int minUtteranceEnd = 1000;
constexpr int maxMilliseconds = 5000;

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

/// The value in milliseconds of a parameter that has one.
Result<Seconds> millisecondsOf(std::string_view name, const std::string& text, int min,
                               std::string_view allowed) {
    const std::optional<int> number = wholeNumber(text);
    if (!number || *number < min || *number > maxMilliseconds) {
        return badParameter(name, text, allowed);
    }
    return Seconds(*number / 1000.0);
}

std::optional<Error> readEndpointing(const Parameters& parameters, RecognitionOptions& options) {
    const std::string* text = find(parameters, "endpointing");
    if (!text || *text == "true") {
        return std::nullopt;
    }
    if (*text == "false") {
        options.endpointing.reset();
        return std::nullopt;
    }
    const Result<Seconds> pause =
        millisecondsOf("endpointing", *text, minEndpointing,
                       "true, false or a whole number of milliseconds from 200 to 5000");
    if (!pause) {
        return pause.error();
    }
    options.endpointing = pause.value();
    return std::nullopt;
}

std::optional<Error> readUtteranceEnd(const Parameters& parameters, RecognitionOptions& options) {
    const std::string* text = find(parameters, "utterance_end_ms");
    if (!text) {
        return std::nullopt;
    }
    const Result<Seconds> gap = millisecondsOf("utterance_end_ms", *text, minUtteranceEnd,
                                               "a whole number of milliseconds from 1000 to 5000");
    if (!gap) {
        return gap.error();
    }
    if (!options.interimResults) {
        return badParameter("utterance_end_ms", *text, "it needs interim_results=true");
    }
    options.utteranceEnd = gap.value();
    return std::nullopt;
}

/// What changes the words or the messages and is not done here.
std::optional<Error> checkUnsupported(const Parameters& parameters) {
    constexpr std::string_view allowed = "this service does not do that";
    for (const std::string_view name : {"diarize", "multichannel", "dictation", "profanity_filter",
                                        "detect_entities", "measurements"}) {
        const Result<bool> flag = flagOf(parameters, name);
        if (!flag) {
            return flag.error();
        }
        if (flag.value()) {
            return badParameter(name, "true", allowed);
        }
    }
    for (const std::string_view name : {"callback", "redact", "replace", "search"}) {
        if (const std::string* text = find(parameters, name)) {
            return badParameter(name, *text, allowed);
        }
    }
    return std::nullopt;
}

std::optional<Error> readFlags(const Parameters& parameters, StreamQuery& query) {
    bool isSmart = false;
    for (const auto& [name, flag] :
         {std::pair{"interim_results", &query.recognition.interimResults},
          std::pair{"smart_format", &isSmart}, std::pair{"punctuate", &query.style.punctuate},
          std::pair{"numerals", &query.style.numerals},
          std::pair{"vad_events", &query.recognition.speechEvents}}) {
        const Result<bool> value = flagOf(parameters, name);
        if (!value) {
            return value.error();
        }
        *flag = value.value();
    }
    query.style.punctuate = query.style.punctuate || isSmart;
    query.style.numerals = query.style.numerals || isSmart;
    return std::nullopt;
}

}  // namespace

Result<StreamQuery> parseStreamQuery(std::string_view text) {
    const Parameters parameters = parametersOf(text);
    for (const auto check : {checkEncoding, checkChannels, checkLanguage, checkUnsupported}) {
        if (std::optional<Error> error = check(parameters)) {
            return *std::move(error);
        }
    }
    const Result<int> sampleRate = sampleRateOf(parameters);
    if (!sampleRate) {
        return sampleRate.error();
    }
    StreamQuery query;
    query.sampleRate = sampleRate.value();
    if (std::optional<Error> error = readFlags(parameters, query)) {
        return *std::move(error);
    }
    for (const auto read : {readEndpointing, readUtteranceEnd}) {
        if (std::optional<Error> error = read(parameters, query.recognition)) {
            return *std::move(error);
        }
    }
    return query;
}

}  // namespace tarvik::service
