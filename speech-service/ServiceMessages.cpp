// SPDX-License-Identifier: MIT

#include "speech-service/ServiceMessages.h"

#include "speech-service/Json.h"
#include "speech-service/UtteranceFormatter.h"

namespace tarvik::service {

namespace {

std::string modelInfo(const EngineInfo& engine) {
    return "{\"name\":" + jsonString(engine.name) + ",\"version\":" + jsonString(engine.version) +
           ",\"arch\":" + jsonString(engine.architecture) + "}";
}

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

std::string alternativeObject(const Utterance& utterance, const TranscriptStyle& style) {
    std::string transcript;
    std::string words;
    for (const WrittenWord& word : writtenWords(utterance, style)) {
        transcript += (transcript.empty() ? "" : " ") + word.written;
        words += (words.empty() ? "" : ",") + wordObject(word.spoken, word.written);
    }
    return "{\"transcript\":" + jsonString(transcript) +
           ",\"confidence\":" + jsonNumber(meanConfidence(utterance.words)) + ",\"words\":[" +
           words + "]}";
}

}  // namespace

std::string resultsMessage(const Utterance& utterance, const TranscriptStyle& style,
                           const EngineInfo& engine, const std::string& requestId) {
    return "{\"type\":\"Results\",\"channel_index\":[0,1],\"duration\":" +
           jsonNumber(utterance.duration.count()) +
           ",\"start\":" + jsonNumber(utterance.start.count()) +
           ",\"is_final\":" + boolean(utterance.isFinal) +
           ",\"speech_final\":" + boolean(utterance.isSpeechFinal) +
           ",\"channel\":{\"alternatives\":[" + alternativeObject(utterance, style) +
           "]},\"metadata\":{\"request_id\":" + jsonString(requestId) +
           ",\"model_info\":" + modelInfo(engine) +
           ",\"model_uuid\":" + jsonString(engine.modelId) +
           "},\"from_finalize\":" + boolean(utterance.isFromFinalize) + "}";
}

std::string speechStartedMessage(Seconds time) {
    return "{\"type\":\"SpeechStarted\",\"channel\":[0,1],\"timestamp\":" +
           jsonNumber(time.count()) + "}";
}

std::string utteranceEndMessage(Seconds lastWordEnd) {
    return "{\"type\":\"UtteranceEnd\",\"channel\":[0,1],\"last_word_end\":" +
           jsonNumber(lastWordEnd.count()) + "}";
}

std::string metadataMessage(const StreamSummary& stream, const EngineInfo& engine) {
    const std::string id = jsonString(engine.modelId);
    return "{\"type\":\"Metadata\",\"transaction_key\":\"deprecated\",\"request_id\":" +
           jsonString(stream.requestId) + ",\"sha256\":" + jsonString(stream.sha256) +
           ",\"created\":" + jsonString(stream.created) +
           ",\"duration\":" + jsonNumber(stream.duration.count()) + ",\"channels\":1,\"models\":[" +
           id + "],\"model_info\":{" + id + ":" + modelInfo(engine) + "}}";
}

}  // namespace tarvik::service
