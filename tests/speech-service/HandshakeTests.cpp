// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <simdjson.h>

#include "speech-service/Handshake.h"

namespace tarvik::service {

namespace {

namespace http = boost::beast::http;

Request upgrade(std::string_view target, std::string_view subprotocols) {
    Request request(http::verb::get, {target.data(), target.size()}, 11);
    request.set(http::field::host, "localhost");
    request.set(http::field::connection, "Upgrade");
    request.set(http::field::upgrade, "websocket");
    request.set(http::field::sec_websocket_version, "13");
    request.set(http::field::sec_websocket_key, "dGhlIHNhbXBsZSBub25jZQ==");
    request.set(http::field::sec_websocket_protocol,
                boost::beast::string_view(subprotocols.data(), subprotocols.size()));
    return request;
}

constexpr std::string_view goodTarget = "/v1/listen?encoding=linear16&sample_rate=16000";

int statusFor(const Request& request, const ServerOptions& options = {}) {
    const Result<tarvik::service::Handshake> handshake = checkHandshake(request, options);
    return handshake ? 101 : handshake.error().code;
}

Request upgradeWith(const char* authorization) {
    Request request = upgrade(goodTarget, "");
    request.erase(http::field::sec_websocket_protocol);
    request.set(http::field::authorization, authorization);
    return request;
}

TEST(Handshake, TakesAnyKeyThatIsNotEmpty) {
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, k")), 101);
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, a key, with blanks and commas")), 101);
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token,   k  ")), 101);
}

TEST(Handshake, RefusesAMissingKey) {
    for (const char* subprotocols :
         {"", "token", "token,", "token,   ", "bearer,", "basic, k", ", k"}) {
        EXPECT_EQ(statusFor(upgrade(goodTarget, subprotocols)), 401) << subprotocols;
    }
}

TEST(Handshake, SelectsTheSubprotocolThatTheKeyFollows) {
    EXPECT_EQ(checkHandshake(upgrade(goodTarget, "token, k"), {}).value().subprotocol, "token");
    EXPECT_EQ(checkHandshake(upgrade(goodTarget, "bearer, k"), {}).value().subprotocol, "bearer");
}

TEST(Handshake, TakesTheKeyInAHeaderAndThenSelectsNoSubprotocol) {
    for (const char* authorization : {"Token k", "token k", "Bearer k", "BEARER   k"}) {
        const auto handshake = checkHandshake(upgradeWith(authorization), {});
        ASSERT_TRUE(handshake) << authorization;
        EXPECT_EQ(handshake.value().subprotocol, "");
    }
    for (const char* authorization : {"Token", "Token ", "Basic k", "k"}) {
        EXPECT_EQ(statusFor(upgradeWith(authorization)), 401) << authorization;
    }
}

TEST(Handshake, TakesTheKeysOfATeamOnly) {
    ServerOptions options;
    options.keys = {"alpha", "beta, too"};
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, alpha"), options), 101);
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, beta, too"), options), 101);
    EXPECT_EQ(statusFor(upgradeWith("Bearer alpha"), options), 101);
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, gamma"), options), 401);
    EXPECT_EQ(statusFor(upgradeWith("Token alpha2"), options), 401);
}

TEST(Handshake, RefusesEveryStreamWithTheStatusThatIsTriedOut) {
    ServerOptions options;
    options.refusal = 402;
    EXPECT_EQ(statusFor(upgrade(goodTarget, "token, k"), options), 402);
    EXPECT_EQ(statusFor(upgrade("/", "token, k"), options), 404);
}

TEST(Handshake, RefusesOtherPathsBeforeAskingForAKey) {
    for (const char* target : {"/", "/v1/listen/", "/v1/listening", "/v2/listen", "*"}) {
        EXPECT_EQ(statusFor(upgrade(target, "")), 404) << target;
    }
}

TEST(Handshake, RefusesEveryRequestOfAWebPage) {
    for (const char* origin : {"https://page.example", "null", ""}) {
        Request request = upgrade(goodTarget, "token, k");
        request.set(http::field::origin, origin);
        EXPECT_EQ(statusFor(request), 403) << origin;
        request.target("/");
        EXPECT_EQ(statusFor(request), 403) << origin;
    }
}

TEST(Handshake, RefusesARequestThatUpgradesNothing) {
    Request request = upgrade(goodTarget, "token, k");
    request.erase(http::field::upgrade);
    EXPECT_EQ(statusFor(request), 426);
}

TEST(Handshake, RefusesABadQueryAfterTheKeyWasSeen) {
    EXPECT_EQ(statusFor(upgrade("/v1/listen", "token, k")), 400);
    EXPECT_EQ(statusFor(upgrade("/v1/listen", "token")), 401);
}

TEST(Handshake, SaysInJsonWhyItRefuses) {
    const Request request = upgrade(goodTarget, "token");
    const Response response = refusal(request, {400, "A \"bad\"\nthing"}, "id-1");
    EXPECT_EQ(response.result_int(), 400U);
    EXPECT_EQ(response[http::field::content_type], "application/json");
    simdjson::dom::parser parser;
    const simdjson::dom::element body = parser.parse(simdjson::padded_string(response.body()));
    EXPECT_EQ(body["err_code"].get_string().value(), "INVALID_QUERY_PARAMETER");
    EXPECT_EQ(body["err_msg"].get_string().value(), "A \"bad\"\nthing");
    EXPECT_EQ(body["request_id"].get_string().value(), "id-1");
    EXPECT_EQ(response["dg-request-id"], "id-1");
    EXPECT_EQ(response["dg-error"], "A \"bad\" thing");
}

}  // namespace

}  // namespace tarvik::service
