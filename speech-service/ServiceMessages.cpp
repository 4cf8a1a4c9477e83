// SPDX-License-Identifier: MIT

#include "speech-service/ServiceMessages.h"

#include "speech-service/Json.h"
#include "speech-service/UtteranceFormatter.h"

namespace tarvik::service {

namespace {

constexpr std::string_view modelInfo =
    R"({"name":"en-us","version":"5prealpha","arch":"pocketsphinx"})";
// A random id that identifies the model in messages, the same on every machine.
constexpr std::string_view modelId = R"("5e2f7c1a-9d0b-4c43-8f57-1b6a0c9e4d72")";

std::string boolean(bool value) {
    return value ? "true" : "false";
}

std::string wordObject(const Word& word, const std::string& written) {
    return "{\"word\":" + jsonString(word.text) + ",\"start\":" + jsonNumber(word.start.count()) +
           ",\"end\":" + jsonNumber(word.end.count()) +
           ",\"confidence\":" + jsonNumber(word.confidence) +
           ",\"punctuated_word\":" + jsonString(written) + "}";
}

double meanConfidence(const std::vector<Word>& words) {
    double sum = 0;
    for (const Word& word : words) {
        sum += word.confidence;
    }
    return words.empty() ? 0 : sum / static_cast<double>(words.size());
}

std::string alternativeObject(const Utterance& utterance, bool punctuate) {
    const std::vector<std::string> written = writtenWords(utterance);
    std::string transcript;
    std::string words;
    for (std::size_t i = 0; i < written.size(); ++i) {
        const Word& word = utterance.words[i];
        transcript += (i > 0 ? " " : "") + (punctuate ? written[i] : word.text);
        words += (i > 0 ? "," : "") + wordObject(word, punctuate ? written[i] : word.text);
    }
    return "{\"transcript\":" + jsonString(transcript) +
           ",\"confidence\":" + jsonNumber(meanConfidence(utterance.words)) + ",\"words\":[" +
           words + "]}";
}

}  // namespace

std::string resultsMessage(const Utterance& utterance, bool punctuate,
                           const std::string& requestId) {
    return "{\"type\":\"Results\",\"channel_index\":[0,1],\"duration\":" +
           jsonNumber(utterance.duration.count()) +
           ",\"start\":" + jsonNumber(utterance.start.count()) +
           ",\"is_final\":" + boolean(utterance.isFinal) +
           ",\"speech_final\":" + boolean(utterance.isSpeechFinal) +
           ",\"channel\":{\"alternatives\":[" + alternativeObject(utterance, punctuate) +
           "]},\"metadata\":{\"request_id\":" + jsonString(requestId) +
           ",\"model_info\":" + std::string(modelInfo) + ",\"model_uuid\":" + std::string(modelId) +
           "},\"from_finalize\":" + boolean(utterance.isFromFinalize) + "}";
}

std::string metadataMessage(Seconds audio, const std::string& created,
                            const std::string& requestId) {
    const std::string id(modelId);
    return "{\"type\":\"Metadata\",\"request_id\":" + jsonString(requestId) +
           ",\"created\":" + jsonString(created) + ",\"duration\":" + jsonNumber(audio.count()) +
           ",\"channels\":1,\"models\":[" + id + "],\"model_info\":{" + id + ":" +
           std::string(modelInfo) + "}}";
}

}  // namespace tarvik::service
