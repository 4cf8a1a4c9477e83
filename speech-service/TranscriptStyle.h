// SPDX-License-Identifier: MIT
#pragma once

namespace tarvik::service {

/// How the words of an utterance are written.
struct TranscriptStyle {
    /// Capitals and full stops.
    bool punctuate = false;
    /// Numbers, dates, times and amounts of money in figures.
    bool numerals = false;
};

}  // namespace tarvik::service
