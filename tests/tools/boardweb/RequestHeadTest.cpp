#include "http/RequestHead.h"

#include <gtest/gtest.h>

#include "http/Listener.h"
#include "support/Failure.h"

using boardweb::ListenAddress;
using boardweb::RequestHead;

TEST(RequestHead, IsRefusedUnlessItIsMeantForThisServer) {
    const struct {
        RequestHead head;
        unsigned status;
    } CASES[] = {
        {{"GET", "/", "localhost", 1, "", "", false}, 0},
        {{"HEAD", "/x", "LocalHost:8411", 1, "same-origin", "cors", false}, 0},
        {{"GET", "/", "127.0.0.1:1", 1, "none", "navigate", false}, 0},
        {{"GET", "/", "[::1]", 1, "", "", false}, 0},
        {{"GET", "/", "[::1]:8411", 1, "", "", false}, 0},
        {{"GET", "/", "board.example:80", 1, "", "", false}, 0},
        {{"GET", "/", " \tlocalhost:1\t ", 1, "", "", false}, 0},
        {{"GET", "/", "localhost", 1, "", "", false, 1}, 0},
        {{"GET", "/", "localhost", 1, "", "", true, 2}, 400},
        {{"GET", "/", "", 0, "", "", false}, 400},
        {{"GET", "/", "localhost", 2, "", "", false}, 400},
        {{"GET", "/", "", 1, "", "", false}, 421},
        {{"GET", "/", " ", 1, "", "", false}, 421},
        {{"GET", "/", "local host", 1, "", "", false}, 421},
        {{"GET", "/", "evil.example", 1, "", "", false}, 421},
        {{"GET", "/", "localhost.evil.example", 1, "", "", false}, 421},
        {{"GET", "/", "localhost:80@evil.example", 1, "", "", false}, 421},
        {{"GET", "/", "[::1]x", 1, "", "", false}, 421},
        {{"GET", "/", "127.0.0.10", 1, "", "", false}, 421},
        {{"GET", "/status", "localhost", 1, "cross-site", "navigate", false}, 403},
        {{"GET", "/", "localhost", 1, "cross-site", "no-cors", false}, 403},
        {{"GET", "/", "localhost", 1, "cross-site", "navigate", false}, 0},
        {{"POST", "/", "localhost", 1, "", "", false}, 405},
        {{"get", "/", "localhost", 1, "", "", false}, 405},
        {{"GET", "/", "localhost", 1, "", "", true}, 413},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(boardweb::refusalOf(each.head, {"Board.Example"}), each.status)
            << each.head.method << " " << each.head.path << " " << each.head.host;
}

TEST(RequestHead, TakesTheHostFromATargetInAbsoluteForm) {
    const struct {
        const char *target, *path, *host;
    } CASES[] = {
        {"/status", "/status", "header"},
        {"*", "*", "header"},
        {"http://a:1/x/http://b/", "/x/http://b/", "a:1"},
        {"HTTP://a", "/", "a"},
        {"http:///x", "/x", ""},
        {"https://a/x", "https://a/x", "header"},
    };
    for (const auto& each : CASES) {
        RequestHead head;
        head.host = "header";
        boardweb::setTarget(head, each.target);
        EXPECT_EQ(head.path, each.path) << each.target;
        EXPECT_EQ(head.host, each.host) << each.target;
    }
}

TEST(ListenAddress, IsAPathOrANumericAddressWithAPort) {
    const struct {
        const char* text;
        bool isLocal;
    } CASES[] = {{"127.0.0.1:0", true}, {"127.255.0.1:65535", true}, {"[::1]:8411", true},
                 {"/run/x:y", true},    {"128.0.0.1:80", false},     {"0.0.0.0:80", false},
                 {"[::]:80", false},    {"[fe80::1]:80", false}};
    for (const auto& each : CASES)
        EXPECT_EQ(ListenAddress(each.text).isLocal(), each.isLocal) << each.text;
    for (const char* const text :
         {"", "8411", ":8411", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536",
          "127.0.0.1:-1", "::1:80", "[]:80", "[::1:80", "localhost:80", "127.1:80"})
        EXPECT_EQ(support::failureOf([&] { ListenAddress{text}; }),
                  "can't listen on '" + std::string(text) +
                      "' (expected ADDRESS:PORT such as 127.0.0.1:8411 or [::1]:8411, or /PATH of "
                      "a Unix socket)");
}
