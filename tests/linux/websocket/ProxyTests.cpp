// SPDX-License-Identifier: MIT

#include <cstdlib>

#include "platform/linux/websocket/ProxySettings.h"
#include "tests/linux/websocket/BeastTest.h"

namespace tarvik::tests {

namespace {

using linuxdesktop::Proxy;
using linuxdesktop::ProxySettings;

class WebSocketProxy : public BeastTest {
  protected:
    ~WebSocketProxy() override {
        for (const char* name : {"https_proxy", "HTTPS_PROXY", "no_proxy", "NO_PROXY"}) {
            unsetenv(name);
        }
    }

    void useProxy(const std::string& userInfo, const char* exceptions) {
        const std::string url =
            "http://" + userInfo + "127.0.0.1:" + std::to_string(proxy.port()) + "/";
        world.endService();
        setenv("https_proxy", url.c_str(), 1);
        setenv("no_proxy", exceptions, 1);
        world.restartService();
    }

    Listener proxy{"127.0.0.1"};
};

TEST_F(WebSocketProxy, TunnelsThroughIt) {
    useProxy("", "");
    start();
    Peer peer = proxy.accept();
    const std::string authority = "127.0.0.1:" + std::to_string(world.listener().port());
    EXPECT_EQ(peer.readHead(),
              "CONNECT " + authority + " HTTP/1.1\r\nHost: " + authority + "\r\n\r\n");
    peer.write("HTTP/1.1 200 Connection established\r\nVia: 1.1 test\r\n\r\n");
    ASSERT_TRUE(peer.startTls(world.serverContext()));
    peer.write(Peer::upgradeResponse(peer.readHead(), "token"));
    ASSERT_TRUE(comes("open token"));
    EXPECT_FALSE(world.listener().hasConnection());
}

TEST_F(WebSocketProxy, ShowsItThePasswordOfItsUrl) {
    useProxy("user:p%40ss@", "");
    start();
    // base64 of "user:p@ss"
    EXPECT_NE(proxy.accept().readHead().find("\r\nProxy-Authorization: Basic dXNlcjpwQHNz\r\n"),
              std::string::npos);
}

TEST_F(WebSocketProxy, TellsTheStatusOfItsRefusal) {
    useProxy("", "");
    start();
    Peer peer = proxy.accept();
    peer.readHead();
    peer.write("HTTP/1.1 407 Proxy Authentication Required\r\nContent-Length: 2\r\n\r\nno");
    ASSERT_TRUE(failed("refused to connect: HTTP 407 Proxy Authentication Required"));
    EXPECT_EQ(recorder->lastError().code, 407);
}

TEST_F(WebSocketProxy, TellsThatItHungUp) {
    useProxy("", "");
    start();
    proxy.accept().readHead();
    ASSERT_TRUE(failed("did not answer"));
}

TEST_F(WebSocketProxy, IsPassedByForTheExceptions) {
    useProxy("", "example.com, 127.0.0.1");
    open();
    EXPECT_FALSE(proxy.hasConnection());
}

TEST_F(WebSocketProxy, IsReadFromTheUpperCaseNamesToo) {
    setenv("HTTPS_PROXY", "upper:1", 1);
    setenv("NO_PROXY", "direct.example", 1);
    const auto proxyFor = [](const char* host) {
        const auto found = ProxySettings::fromEnvironment().proxyFor(host, 443);
        return found && found.value() ? found.value()->host : "none";
    };
    EXPECT_EQ(proxyFor("example.com"), "upper");
    EXPECT_EQ(proxyFor("direct.example"), "none");
    // The lower-case names have precedence.
    setenv("https_proxy", "lower:1", 1);
    setenv("no_proxy", "", 1);
    EXPECT_EQ(proxyFor("example.com"), "lower");
    EXPECT_EQ(proxyFor("direct.example"), "lower");
}

TEST(WebSocketProxySettings, Exceptions) {
    struct Case {
        const char* exceptions;
        const char* host;
        bool isDirect;
    };
    for (const Case& test :
         {Case{"", "example.com", false}, Case{"*", "example.com", true},
          Case{"example.com", "example.com", true}, Case{"example.com", "EXAMPLE.com", true},
          Case{"example.com", "api.example.com", true},
          Case{".example.com", "api.example.com", true}, Case{".example.com", "example.com", true},
          Case{"example.com", "notexample.com", false},
          Case{"a.org example.com", "example.com", true},
          Case{"example.com:443", "example.com", true},
          Case{"example.com:8443", "example.com", false}, Case{"10.0.0.0/8", "10.1.2.3", true},
          Case{"10.0.0.0/8", "11.1.2.3", false}, Case{"::1", "::1", true},
          Case{"[::1]:443", "::1", true}, Case{"fd00::/8", "fd12::1", true},
          Case{"0.0.1", "127.0.0.1", false}}) {
        const auto proxy = ProxySettings("proxy:3128", test.exceptions).proxyFor(test.host, 443);
        ASSERT_TRUE(proxy);
        EXPECT_EQ(!proxy.value(), test.isDirect) << test.exceptions << " " << test.host;
    }
}

TEST(WebSocketProxySettings, Addresses) {
    const auto proxyOf = [](const char* text) {
        return ProxySettings(text, "").proxyFor("example.com", 443);
    };
    const Proxy plain = *proxyOf("proxy:3128").value();
    EXPECT_EQ(plain.host, "proxy");
    EXPECT_EQ(plain.port, 3128);
    EXPECT_EQ(plain.authorization, "");
    const Proxy full = *proxyOf("http://a:b@[::1]:3128/").value();
    EXPECT_EQ(full.host, "::1");
    EXPECT_EQ(full.authorization, "Basic YTpi");
    EXPECT_EQ(proxyOf("http://proxy").value()->port, 80);
    EXPECT_FALSE(proxyOf("").value());
    EXPECT_FALSE(proxyOf("socks5://proxy:1080"));
    EXPECT_FALSE(proxyOf("http://proxy:port"));
}

}  // namespace

}  // namespace tarvik::tests
