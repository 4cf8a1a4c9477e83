// SPDX-License-Identifier: MIT
// The parsers of the local speech service: the query of a request and the text messages of a
// client.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Promise.h"
#include "fuzz/Utf8.h"
#include "speech-service/ControlMessage.h"
#include "speech-service/StreamQuery.h"

namespace {

using namespace tarvik;
using namespace tarvik::service;
using fuzz::promise;

constexpr std::string_view goodQuery = "encoding=linear16&sample_rate=48000&channels=1";

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', digits[byte >> 4], digits[byte & 0xF]};
    }
    return encoded;
}

void checkQuery(const std::string& text) {
    const auto parsed = parseStreamQuery(text);
    if (!parsed) {
        promise(parsed.error().code == 400, "a bad query is the client's error");
        promise(fuzz::isUtf8(parsed.error().localizedDescription), "an error can be sent as JSON");
        return;
    }
    const StreamQuery& query = parsed.value();
    promise(query.sampleRate >= 8000 && query.sampleRate <= 192000, "a rate is within its limits");
    const auto isAlike = [&query](const Result<StreamQuery>& other) {
        return other && other.value().sampleRate == query.sampleRate &&
               other.value().recognition.interimResults == query.recognition.interimResults &&
               other.value().style.punctuate == query.style.punctuate;
    };
    const auto withUnknown = parseStreamQuery("unknown=1&" + text);
    promise(isAlike(withUnknown) &&
                withUnknown.value().recognition.endpointing == query.recognition.endpointing &&
                withUnknown.value().recognition.utteranceEnd == query.recognition.utteranceEnd &&
                withUnknown.value().recognition.speechEvents == query.recognition.speechEvents &&
                withUnknown.value().style.numerals == query.style.numerals,
            "an unknown parameter changes nothing");
    promise(isAlike(parseStreamQuery(
                "encoding=linear16&sample_rate=" + std::to_string(query.sampleRate) +
                "&interim_results=" + (query.recognition.interimResults ? "true" : "false") +
                "&punctuate=" + (query.style.punctuate ? "true" : "false"))),
            "a query that says the same gives the same stream");
}

void checkValue(const std::string& value) {
    const std::string rate = "encoding=linear16&sample_rate=" + percentEncoded(value);
    const auto parsed = parseStreamQuery(rate);
    if (parsed) {
        promise(value.find_first_not_of("0123456789") == std::string::npos,
                "a rate is a whole number");
        promise(std::stoi(value) == parsed.value().sampleRate, "a rate is read in decimal");
    }
    const auto harmless =
        parseStreamQuery(std::string(goodQuery) + "&tag=" + percentEncoded(value));
    promise(harmless && harmless.value().sampleRate == 48000,
            "the value of an unknown parameter changes nothing");
}

void checkControl(const std::string& text) {
    const auto message = parseControlMessage(text);
    if (message) {
        promise(fuzz::isUtf8(text), "a control message is UTF-8");
        promise(parseControlMessage(" " + text + "\n") == message, "blanks change nothing");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkQuery(text);
    checkQuery(std::string(goodQuery) + "&" + text);
    checkValue(text);
    checkControl(text);
    checkControl(R"({"type":)" + text + "}");
    return 0;
}
