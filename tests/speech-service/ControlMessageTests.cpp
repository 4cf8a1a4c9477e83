// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>

#include "speech-service/ControlMessage.h"

namespace tarvik::service {

namespace {

TEST(ControlMessage, KnowsTheThreeThatClientsSend) {
    EXPECT_EQ(parseControlMessage(R"({"type":"CloseStream"})"), ControlMessage::closeStream);
    EXPECT_EQ(parseControlMessage(R"({ "type" : "Finalize", "channel": 0 })"),
              ControlMessage::finalize);
    EXPECT_EQ(parseControlMessage(R"({"type":"KeepAlive"})"), ControlMessage::keepAlive);
}

TEST(ControlMessage, ReadsNothingFromAnythingElse) {
    for (const std::string& text :
         {std::string(), std::string("CloseStream"), std::string(R"({"type":"CloseStream")"),
          std::string(R"({"type":"Closestream"})"), std::string(R"({"type":1})"),
          std::string(R"(["CloseStream"])"), std::string("\"CloseStream\""), std::string("\xff"),
          std::string(5000, '[')}) {
        EXPECT_EQ(parseControlMessage(text), std::nullopt) << text;
    }
}

}  // namespace

}  // namespace tarvik::service
