#include "status/StatusServer.h"

#include <memory>

#include <sys/resource.h>

#include "host/status/StatusTalk.h"
#include "support/Descriptors.h"

using nlohmann::ordered_json;
using support::callOf;
using support::ScriptedClient;

namespace {

class StatusServerTest : public testing::Test {
protected:
    std::string parametersOf(const std::string& reply) const {
        return ordered_json::parse(reply).at("parameters").dump();
    }

    const support::TempDir m_dir;
    support::CannedAnswers m_answers{"/board.toml"};
    board::StatusServer m_server{m_dir.path("host"), m_answers};
};

const char MONITOR[] = R"({"method":"org.boarddrivers.Host.Monitor","more":true})";
const char MONITOR_LEDS[] = R"({"method":"org.boarddrivers.Host.MonitorLeds","more":true})";
const char FIRST_REPLY[] = R"({"parameters":{"event":null,"lost":0},"continues":true})";
const char METRICS_REPLY[] = R"({"parameters":{"text":"board_info 1\n"}})";

std::string litReply(std::uint32_t lit) {
    return R"({"parameters":{"lit":)" + std::to_string(lit) + R"(},"continues":true})";
}

} // namespace

TEST_F(StatusServerTest, AnswersEachMethod) {
    ScriptedClient client(m_server);
    EXPECT_EQ(parametersOf(client.ask(callOf("Status"))), m_answers.status().dump());
    EXPECT_EQ(parametersOf(client.ask(callOf("Descriptor"))), m_answers.descriptor().dump());
    const ordered_json leds = m_answers.leds();
    for (const auto& [more, expected] :
         {std::pair("", leds),
          {R"(,"parameters":{"name":null})", leds},
          {R"(,"parameters":{"name":"line"})", ordered_json::array({leds[1]})}})
        EXPECT_EQ(parametersOf(client.ask(callOf("Leds", more))),
                  ordered_json({{"leds", expected}}).dump());
    EXPECT_EQ(client.ask(callOf("Metrics", R"(,"more":true,"parameters":null)")), METRICS_REPLY);
    EXPECT_EQ(client.ask(R"({"method":"org.varlink.service.GetInfo"})"),
              R"({"parameters":{"vendor":"boarddrivers","product":"boardctl","version":"1.0.0",)"
              R"("url":"","interfaces":["org.varlink.service","org.boarddrivers.Host"]}})");
    for (const std::string name : {"org.varlink.service", "org.boarddrivers.Host"})
        EXPECT_NE(client
                      .ask(R"({"method":"org.varlink.service.GetInterfaceDescription",)"
                           R"("parameters":{"interface":")" +
                           name + "\"}}")
                      .find("\\ninterface " + name + "\\n"),
                  std::string::npos);
}

TEST_F(StatusServerTest, NamesWhatIsWrongWithACall) {
    const std::pair<std::string, std::string> calls[] = {
        {R"({"method":"Status"})", R"(varlink.service.InvalidParameter {"parameter":"method"})"},
        {R"({"method":"org.other.Status"})",
         R"(varlink.service.InterfaceNotFound {"interface":"org.other"})"},
        {callOf("Reboot"),
         R"(varlink.service.MethodNotFound {"method":"org.boarddrivers.Host.Reboot"})"},
        {callOf("Status", R"(,"upgrade":true)"),
         R"(varlink.service.MethodNotImplemented {"method":"org.boarddrivers.Host.Status"})"},
        {callOf("Status", R"(,"parameters":{"name":"x"})"),
         R"(varlink.service.InvalidParameter {"parameter":"name"})"},
        {callOf("Leds", R"(,"parameters":{"name":1})"),
         R"(varlink.service.InvalidParameter {"parameter":"name"})"},
        {R"({"method":"org.varlink.service.GetInterfaceDescription"})",
         R"(varlink.service.InvalidParameter {"parameter":"interface"})"},
        {R"({"method":"org.varlink.service.GetInterfaceDescription",)"
         R"("parameters":{"interface":"org.other"}})",
         R"(varlink.service.InterfaceNotFound {"interface":"org.other"})"},
        {callOf("Monitor"), "varlink.service.ExpectedMore {}"},
        {callOf("MonitorLeds"), "varlink.service.ExpectedMore {}"},
        {callOf("Leds", R"(,"parameters":{"name":"x"})"),
         R"(boarddrivers.Host.NoSuchLed {"name":"x","known":["power","line"]})"},
        {callOf("Metrics"), R"(boarddrivers.Host.Failed {"text":"out of figures"})"},
    };
    m_answers.fails = true;
    ScriptedClient client(m_server);
    for (const auto& [call, expected] : calls) {
        const auto reply = ordered_json::parse(client.ask(call));
        EXPECT_EQ(reply.at("error").get<std::string>() + " " + reply.at("parameters").dump(),
                  "org." + expected);
    }
}

TEST_F(StatusServerTest, EndsOnlyTheConnectionThatSendsSomethingElse) {
    ScriptedClient other(m_server);
    const std::string deep(1000, '['), call = callOf("Metrics");
    const std::string wrong[] = {
        "garbage",
        "",
        "[]",
        "{}",
        R"({"method":1})",
        R"({"method":null})",
        "{\"method\":\"\xff\"}",
        callOf("Metrics", R"(,"parameters":[])"),
        callOf("Metrics", R"(,"more":1)"),
        callOf("Metrics", ",\"x\":" + deep + std::string(deep.size(), ']')),
        deep,
        call + std::string(board::StatusServer::LARGEST_REQUEST + 1 - call.size(), ' ')};
    for (const std::string& message : wrong) {
        EXPECT_EQ(ScriptedClient(m_server).ask(message), "END") << message.substr(0, 100);
        EXPECT_EQ(other.ask(call), METRICS_REPLY);
    }
    ScriptedClient endless(m_server), largest(m_server);
    endless.say(std::string(board::StatusServer::LARGEST_REQUEST + 1, ' '));
    EXPECT_EQ(endless.hear(), "END");
    const std::string blanks(board::StatusServer::LARGEST_REQUEST - call.size(), ' ');
    EXPECT_EQ(largest.ask(call + blanks), METRICS_REPLY);
    ScriptedClient(m_server).say(call.substr(0, 9)); // and is gone
    EXPECT_EQ(other.ask(call), METRICS_REPLY);
    EXPECT_EQ(m_server.clients(), 2U); // the other one and the largest
}

TEST_F(StatusServerTest, AnswersManyRequestsInOrderAlsoAfterTheLast) {
    ScriptedClient client(m_server);
    const std::string end(1, '\0');
    client.say(callOf("Metrics") + end + callOf("Status", R"(,"oneway":true)") + end +
               callOf("Monitor", R"(,"oneway":true,"more":true)") + end + callOf("None") + end +
               callOf("Metrics") + end + "{\"half");
    client.endSending();
    EXPECT_EQ(client.hear(), METRICS_REPLY);
    EXPECT_NE(client.hear().find("MethodNotFound"), std::string::npos);
    EXPECT_EQ(client.hear(), METRICS_REPLY);
    EXPECT_EQ(client.hear(), "END");
}

TEST_F(StatusServerTest, KeepsAnsweringWhileAClientDoesNotRead) {
    m_answers.figures = std::string(100000, 'f');
    ScriptedClient silent(m_server), other(m_server);
    const std::string request = callOf("Metrics") + '\0';
    std::size_t sent = 0;
    for (std::size_t more = request.size(); more == request.size(); sent += more)
        more = silent.say(request);
    EXPECT_FALSE(support::isBusy(m_server));
    EXPECT_EQ(other.ask(callOf("Leds")).substr(0, 14), R"({"parameters":)");
    for (std::size_t i = 0; i < sent / request.size(); ++i)
        EXPECT_EQ(silent.hear().size(), 100000 + sizeof R"({"parameters":{"text":""}})" - 1);
    EXPECT_EQ(silent.hear(), "");
}

TEST_F(StatusServerTest, RefusesTheSixtyFifthClientUntilOneLeaves) {
    const auto before = support::openDescriptors();
    {
        std::list<ScriptedClient> clients;
        for (std::size_t i = 0; i < board::StatusServer::MOST_CLIENTS; ++i)
            clients.emplace_back(m_server);
        ScriptedClient refused(m_server);
        EXPECT_EQ(
            refused.hear(),
            R"({"error":"org.boarddrivers.Host.TooManyClients","parameters":{"maximum":64}})");
        EXPECT_EQ(refused.hear(), "END");
        for (ScriptedClient& client : clients)
            EXPECT_EQ(client.ask(callOf("Metrics")), METRICS_REPLY);
        clients.pop_front();
        support::settle(m_server);
        EXPECT_EQ(ScriptedClient(m_server).ask(callOf("Metrics")), METRICS_REPLY);
    }
    support::settle(m_server);
    EXPECT_EQ(m_server.clients(), 0U);
    EXPECT_EQ(support::openDescriptors(), before);
}

TEST_F(StatusServerTest, WaitsWithoutSpinningIfNoDescriptorIsLeft) {
    auto first = std::make_unique<ScriptedClient>(m_server);
    const board::FileDescriptor waiting =
        board::tryConnect(m_server.path(), std::chrono::seconds(5));
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{static_cast<rlim_t>(waiting.number()) + 1, former.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    support::settle(m_server);
    EXPECT_EQ(m_server.clients(), 1U);
    first.reset();
    support::settle(m_server);
    EXPECT_EQ(m_server.clients(), 1U) << "the one who waited takes the place that became free";
    ::setrlimit(RLIMIT_NOFILE, &former);
}

TEST_F(StatusServerTest, SendsEventsToThoseWhoMonitorThem) {
    ScriptedClient first(m_server), second(m_server), other(m_server);
    EXPECT_EQ(first.ask(MONITOR), FIRST_REPLY);
    EXPECT_EQ(second.ask(MONITOR), FIRST_REPLY);
    EXPECT_EQ(second.ask("garbage"), ""); // is left unread
    second.endSending();
    m_server.publishLeds(1); // they did not ask for LEDs
    m_server.publish({{"event", "x"}});
    for (ScriptedClient* const client : {&first, &second})
        EXPECT_EQ(client->hear(),
                  R"({"parameters":{"event":{"event":"x"},"lost":0},"continues":true})");
    EXPECT_EQ(other.hear(), "");
}

TEST_F(StatusServerTest, TellsAClientThatDoesNotReadHowManyEventsItMissed) {
    constexpr int EVENTS = 2000;
    const ordered_json event = {{"event", std::string(1000, 'x')}};
    ScriptedClient client(m_server);
    client.ask(MONITOR);
    for (int i = 0; i < EVENTS; ++i)
        m_server.publish(event);
    EXPECT_FALSE(support::isBusy(m_server));
    int heard = 0, lost = 0;
    for (std::string reply; !(reply = client.hear()).empty();) {
        const auto parameters = ordered_json::parse(reply).at("parameters");
        heard += parameters.at("event").is_null() ? 0 : 1;
        lost += parameters.at("lost").get<int>();
    }
    EXPECT_EQ(heard + lost, EVENTS);
    EXPECT_GT(lost, EVENTS / 2);
    m_server.publish(event);
    EXPECT_NE(client.hear().find(R"("lost":0)"), std::string::npos);
}

TEST_F(StatusServerTest, SendsTheLatestLedsToThoseWhoMonitorThem) {
    constexpr std::uint32_t LAST = 5000;
    ScriptedClient client(m_server);
    EXPECT_FALSE(m_server.isAskedForLeds());
    EXPECT_EQ(client.ask(MONITOR_LEDS), litReply(1));
    EXPECT_TRUE(m_server.isAskedForLeds());
    m_server.publish({{"event", "x"}});
    for (const std::uint32_t lit : {1U, 0xFFFFFFFFU, 0U, 0U})
        m_server.publishLeds(lit);
    for (const std::string& reply : {litReply(0xFFFFFFFF), litReply(0), std::string()})
        EXPECT_EQ(client.hear(), reply);
    for (std::uint32_t lit = 1; lit <= LAST; ++lit) // the client reads nothing
        m_server.publishLeds(lit);
    EXPECT_FALSE(support::isBusy(m_server));
    std::uint32_t heard = 0;
    std::string last;
    for (std::string reply; !(reply = client.hear()).empty(); ++heard)
        last = reply;
    EXPECT_EQ(last, litReply(LAST));
    EXPECT_LT(heard, LAST / 2);
}
