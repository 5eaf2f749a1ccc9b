#include "client/StatusClient.h"

#include <cstdlib>
#include <filesystem>
#include <map>

#include "base/Text.h"
#include "client/StatusPlaces.h"
#include "host/status/StatusTalk.h"
#include "support/Failure.h"

using board::StatusClient;
using support::failureOf;

namespace {

class StatusClientTest : public testing::Test {
protected:
    StatusClientTest() {
        m_dir.write("board.toml", "");
        ::unsetenv("RUNTIME_DIRECTORY");
        ::setenv("XDG_RUNTIME_DIR", m_dir.path("user").c_str(), 1);
        m_dir.makeFolder("user");
    }

    std::string path(const std::string& name) const {
        return std::filesystem::canonical(m_dir.path("")) / name;
    }

    const support::TempDir m_dir;
    const std::string m_profile = m_dir.path("board.toml");
    const support::CannedAnswers m_answers{path("board.toml")};
};

/// Lets the server in the same thread work while the client waits for it.
StatusClient::Wait servedBy(board::StatusServer& server) {
    return [&](auto, int) {
        support::settle(server);
        return false;
    };
}

} // namespace

TEST_F(StatusClientTest, LooksWhereAHostOfTheProfileMayListen) {
    const std::string last = "/run/boarddrivers/host", user = m_dir.path("user/boarddrivers/");
    const auto places = board::statusPlaces(m_profile, true);
    ASSERT_EQ(places.size(), 3U);
    EXPECT_EQ(places[0], path("host.socket"));
    EXPECT_EQ(places[1].substr(0, user.size()), user);
    EXPECT_EQ(places[2], last);
    m_dir.write("other.toml", "");
    EXPECT_NE(board::statusPlaces(m_dir.path("other.toml"), true)[1], places[1]);
    EXPECT_EQ(board::statusPlaces(m_dir.path("user/../board.toml"), false)[0], places[1]);
    ::setenv("RUNTIME_DIRECTORY", "/run/service:/run/more", 1);
    ::setenv("XDG_RUNTIME_DIR", "", 1);
    EXPECT_EQ(board::statusPlaces(m_profile, false),
              (std::vector<std::string>{"/run/service/host", last}));
}

TEST_F(StatusClientTest, FindsTheHostOfTheProfileBehindThatOfAnother) {
    const support::CannedAnswers others("/other.toml");
    const auto places = board::statusPlaces(m_profile, true);
    board::StatusServer other(places[0], others);
    const auto wait = servedBy(other);
    EXPECT_EQ(failureOf([&] { board::findHost(m_profile, true, wait); }),
              "no host of " + m_profile + " answers at " + board::joinChoices(places) +
                  " (start one with `boardctl --board " + m_profile + " run`); " + places[0] +
                  " answers for another profile, /other.toml");
    board::StatusServer server(places[1], m_answers);
    const auto found = board::findHost(m_profile, true, [&](auto, int) {
        support::settle(other);
        support::settle(server);
        return false;
    });
    EXPECT_EQ(found.client.path(), places[1]);
    EXPECT_EQ(found.status, m_answers.status());
}

TEST_F(StatusClientTest, FindsTheHostOfAProfileWhosePathIsNotUtf8) {
    const std::string profile = path("\xFF.toml");
    m_dir.write("\xFF.toml", "");
    const support::CannedAnswers answers(profile);
    board::StatusServer server(board::statusPlaces(profile, true)[0], answers);
    EXPECT_EQ(board::findHost(profile, true, servedBy(server)).client.path(), server.path());
}

TEST_F(StatusClientTest, ReceivesEventsUntilTheHostOrTheProgramEnds) {
    auto server = std::make_unique<board::StatusServer>(m_dir.path("host"), m_answers);
    bool isAsked = false;
    StatusClient client(server->path(), [&](auto, int) {
        if (server)
            support::settle(*server);
        return isAsked;
    });
    client.monitor();
    server->publish({{"event", "x"}});
    const auto event = client.next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->event.dump(), R"({"event":"x"})");
    EXPECT_EQ(event->lost, 0);
    isAsked = true;
    EXPECT_FALSE(client.next());
    server->publish({{"event", "y"}});
    EXPECT_FALSE(client.next());
    isAsked = false;
    EXPECT_TRUE(client.next());
    server.reset();
    EXPECT_EQ(failureOf([&] { client.next(); }),
              m_dir.path("host") + ": the host has ended or closed the connection");
}

TEST_F(StatusClientTest, NamesWhatIsWrongWithTheHost) {
    const std::string place = m_dir.path("host");
    const auto callStatus = [&](const StatusClient::Wait& wait) {
        const StatusClient::Limits limits{std::chrono::seconds(5), std::chrono::seconds(0)};
        return failureOf([&] { StatusClient(place, wait, limits).call("Status"); });
    };
    const auto ready = [](auto, int) { return false; };
    EXPECT_EQ(callStatus(ready), place + ": no host answers");
    const board::LocalListener listener(place);
    EXPECT_EQ(callStatus(ready), place + ": the host does not answer");
    for (const auto& [bytes, fault] :
         {std::pair(std::string("{}x\0", 4), "answers with something other than a Varlink reply"),
          {std::string("{\"error\":1}\0", 12), "answers with something other than a Varlink reply"},
          {std::string("{}"), "the host has ended or closed the connection"}}) {
        while (listener.tryAccept().isOpen()) {
        }
        StatusClient client(place, ready);
        board::FileDescriptor host = listener.tryAccept();
        ASSERT_EQ(board::trySend(host, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
        host.close();
        EXPECT_EQ(failureOf([&] { client.call("Status"); }), place + ": " + fault);
    }
}

TEST_F(StatusClientTest, ReadsWhyItIsRefused) {
    board::StatusServer server(path("host.socket"), m_answers);
    std::list<support::ScriptedClient> clients;
    for (std::size_t i = 0; i < board::StatusServer::MOST_CLIENTS; ++i)
        clients.emplace_back(server);
    EXPECT_EQ(failureOf([&] { board::findHost(m_profile, true, servedBy(server)); }),
              "can't ask a host of " + m_profile + ": " + server.path() +
                  ": the host answers with the error org.boarddrivers.Host.TooManyClients "
                  R"({"maximum":64})");
}
