// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "speech-service/EngineChoice.h"
#include "speech-service/Resampler.h"
#include "speech-service/UtteranceRecognizer.h"
#include "tests/speech-service/SyntheticSound.h"

namespace tarvik::service {

namespace {

/// Where a word begins and ends, in hundredths of a second.
struct Place {
    int begin = 0;
    int end = 0;
};

struct Sentence {
    /// The end of the file's name.
    const char* number;
    std::vector<Place> words;
};

/// The words of five read sentences, found by aligning the sounds with the known words.
const std::vector<Sentence> sentences{
    {"0870", {{15, 37},   {37, 63},   {63, 100},  {100, 156}, {156, 184}, {184, 222},
              {222, 272}, {272, 290}, {290, 345}, {345, 390}, {390, 433}, {433, 453},
              {453, 479}, {479, 494}, {494, 546}, {546, 556}, {556, 575}, {575, 604},
              {604, 614}, {614, 635}, {635, 661}, {661, 705}}},
    {"0880",
     {{21, 33}, {33, 56}, {56, 115}, {115, 130}, {130, 148}, {148, 212}, {212, 233}, {233, 280}}},
    {"0890",
     {{25, 59},
      {59, 70},
      {70, 86},
      {86, 122},
      {122, 174},
      {174, 221},
      {221, 241},
      {241, 278},
      {278, 359},
      {362, 388},
      {388, 398},
      {398, 416},
      {416, 437},
      {437, 509}}},
    {"0920",
     {{22, 44},
      {44, 55},
      {55, 98},
      {98, 103},
      {103, 142},
      {142, 146},
      {146, 201},
      {201, 250},
      {250, 272},
      {272, 298},
      {298, 319},
      {319, 336},
      {336, 370},
      {370, 406},
      {406, 427},
      {427, 500},
      {500, 513},
      {513, 520},
      {520, 584}}},
    {"0930",
     {{20, 39}, {39, 64}, {64, 93}, {93, 107}, {107, 132}, {132, 168}, {168, 227}, {227, 286}}},
};

Sound soundOf(const Sentence& sentence) {
    constexpr std::size_t headerSize = 44;
    std::ifstream file(
        std::filesystem::path(READ_SENTENCES) /
            ("sense_and_sensibility_01_austen_64kb-" + std::string(sentence.number) + ".wav"),
        std::ios::binary);
    file.ignore(headerSize);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    Sound sound;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        sound.push_back(static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[i]) |
                                                  static_cast<std::uint8_t>(bytes[i + 1]) << 8));
    }
    return sound;
}

/// Speech without any pause, and where its words are.
struct Speech {
    Sound sound = quiet(0.5);
    std::vector<Place> words;
};

/// All sentences, beginning with the one at `first`. The pauses are taken out.
Speech allSentences(std::size_t first) {
    constexpr int samplesPerPlace = recognitionRate / 100;
    Speech speech;
    for (std::size_t i = 0; i < sentences.size(); ++i) {
        const Sentence& sentence = sentences[(first + i) % sentences.size()];
        const Sound sound = soundOf(sentence);
        for (const Place& word : sentence.words) {
            const auto begin = static_cast<int>(speech.sound.size()) / samplesPerPlace;
            speech.words.push_back({begin, begin + word.end - word.begin});
            std::copy(sound.begin() + word.begin * samplesPerPlace,
                      sound.begin() + word.end * samplesPerPlace, std::back_inserter(speech.sound));
        }
    }
    speech.sound = std::move(speech.sound) + quiet(1.5);
    return speech;
}

/// The parameter is the first sentence.
class Reader : public testing::TestWithParam<std::size_t> {};

TEST_P(Reader, IsNeverCutInsideAWord) {
    ASSERT_TRUE(std::filesystem::exists(READ_SENTENCES))
        << "the package pocketsphinx-testdata is missing";
    const std::unique_ptr<Engine> engine = createEngine(defaultEngine, {}).value();
    const std::unique_ptr<Decoder> decoder = engine->createDecoder().value();
    // An alignment counts the silent, closed lips before a "p" to the word.
    constexpr Seconds closedLips{0.08};
    constexpr Seconds tolerance{0.05};
    const Speech speech = allSentences(GetParam());
    std::size_t cuts = 0;
    UtteranceRecognizer::Handlers handlers;
    handlers.onUtterance = [&](const Utterance& utterance) {
        if (utterance.isSentenceEnd) {
            return;
        }
        ++cuts;
        const Seconds cut = utterance.start + utterance.duration;
        for (const Place& word : speech.words) {
            EXPECT_FALSE(Seconds(word.begin / 100.0) + closedLips < cut &&
                         cut < Seconds(word.end / 100.0) - tolerance)
                << "cut at " << cut.count() << " s inside the word from " << word.begin / 100.0
                << " to " << word.end / 100.0 << " s";
        }
    };
    UtteranceRecognizer recognizer(*decoder, {}, std::move(handlers));
    recognizer.process(speech.sound);
    recognizer.finish();
    EXPECT_GE(cuts, 1U);
}

INSTANTIATE_TEST_SUITE_P(Orders, Reader, testing::Values(0, 2, 4),
                         testing::PrintToStringParamName());

}  // namespace

}  // namespace tarvik::service
