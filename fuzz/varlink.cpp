// Reads arbitrary bytes as the requests of a client, in pieces of any size: the messages must be
// the same as in one piece. Requests and replies must survive being written and read again. Then
// writes a request from the same bytes, with or without a mistake: it must be accepted exactly if
// it has no mistake, and must be read as it was written.

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "Oracle.h"
#include "status/StatusCalls.h"

using board::varlink::MessageBuffer;
using board::varlink::Reply;
using board::varlink::Request;
using fuzz::expect;

namespace {

constexpr std::size_t LIMIT = 1000;

struct Answers : board::StatusAnswers {
    nlohmann::ordered_json status() const override { return {{"profile", "\xff"}}; }
    nlohmann::ordered_json leds() const override {
        return nlohmann::ordered_json::array({{{"name", "power"}}});
    }
    std::uint32_t lit() const override { return 1; }
    nlohmann::ordered_json descriptor() const override { return {{"fault", "\xff"}}; }
    std::string metrics() const override { throw std::runtime_error("none"); }
};

bool isSame(const Request& a, const Request& b) {
    return a.method == b.method && a.parameters == b.parameters && a.oneway == b.oneway &&
           a.more == b.more && a.upgrade == b.upgrade;
}

std::string withoutEnd(const std::string& bytes) {
    expect(!bytes.empty() && bytes.find('\0') == bytes.size() - 1, "a message has one zero byte");
    return bytes.substr(0, bytes.size() - 1);
}

void handle(const std::string& message) {
    const auto request = board::varlink::parseRequest(message);
    if (!request)
        return;
    const auto again = board::varlink::parseRequest(withoutEnd(toBytes(*request)));
    expect(again && isSame(*request, *again), "a request is read as it was written");
    const Reply reply = board::StatusCalls(Answers()).reply(*request);
    const auto read = board::varlink::parseReply(withoutEnd(toBytes(reply)));
    expect(read && read->error == reply.error && read->continues == reply.continues,
           "a reply is read as it was written");
    const bool isMonitor = request->method.rfind("org.boarddrivers.Host.Monitor", 0) == 0;
    expect(!reply.continues || (isMonitor && request->more), "only what is monitored continues");
}

/// The messages that a client sends before the first one that is too long or is not finished.
std::vector<std::string> messagesOf(const std::string& bytes) {
    std::vector<std::string> messages;
    std::istringstream stream(bytes);
    for (std::string message; std::getline(stream, message, '\0') && message.size() <= LIMIT;)
        if (!stream.eof())
            messages.push_back(message);
    return messages;
}

void readInPieces(const std::string& bytes, FuzzedDataProvider& data) {
    MessageBuffer buffer(LIMIT);
    std::vector<std::string> messages;
    for (std::size_t done = 0; done < bytes.size() && !buffer.isTooLong();) {
        const auto count = data.ConsumeIntegralInRange<std::size_t>(1, bytes.size() - done);
        buffer.append(bytes.data() + done, count);
        done += count;
        while (!buffer.isTooLong()) {
            const auto message = buffer.take();
            if (!message)
                break;
            messages.push_back(*message);
        }
    }
    expect(messages == messagesOf(bytes), "messages end at zero bytes, and not elsewhere");
    std::for_each(messages.begin(), messages.end(), handle);
}

enum class Mistake {
    NONE,
    NO_METHOD,
    METHOD_NUMBER,
    PARAMETERS_LIST,
    FLAG_TEXT,
    ARRAY,
    TWO_VALUES,
    CUT,
    TOO_DEEP,
    NO_UTF8,
    COUNT
};

/// Makes a request. Returns its text with any member order, blanks and nulls that are allowed.
std::string written(Request& request, FuzzedDataProvider& data, Mistake mistake) {
    const char* const blank = data.PickValueInArray({"", " ", "\r\n\t"});
    request.method = data.PickValueInArray({"", "a.b", "org.boarddrivers.Host.Leds"});
    std::vector<std::string> members = {"\"x\": [{}, \"}\\u0000\"]"};
    if (mistake == Mistake::METHOD_NUMBER)
        members.emplace_back("\"method\": 1");
    else if (mistake != Mistake::NO_METHOD)
        members.push_back("\"method\":\"" + request.method + '"');
    bool* const flags[] = {&request.oneway, &request.more, &request.upgrade};
    const char* const names[] = {"oneway", "more", "upgrade"};
    for (int i = 0; i < 3; ++i) {
        const char* const word = data.PickValueInArray({"", "null", "false", "true"});
        *flags[i] = word[0] == 't';
        if (*word)
            members.push_back(std::string("\"") + names[i] + "\" :" + word);
    }
    // The message itself is the first level.
    const int depth = mistake == Mistake::TOO_DEEP ? 40 : data.ConsumeIntegralInRange(1, 30);
    std::string open, close;
    for (int i = 0; i < depth; ++i) {
        open += "{\"name\":";
        close += '}';
    }
    if (mistake == Mistake::PARAMETERS_LIST)
        members.emplace_back("\"parameters\":[]");
    else if (data.ConsumeBool() || mistake == Mistake::TOO_DEEP) {
        members.push_back("\"parameters\":" + open + "1" + close);
        request.parameters = 1;
        for (int i = 0; i < depth; ++i)
            request.parameters = nlohmann::ordered_json{{"name", request.parameters}};
    }
    if (mistake == Mistake::FLAG_TEXT) {
        members.emplace_back("\"more\":\"true\"");
        members.erase(std::remove_if(members.begin(), members.end() - 1,
                                     [](const std::string& member) {
                                         return member.rfind("\"more\"", 0) == 0;
                                     }),
                      members.end() - 1);
    }
    if (mistake == Mistake::NO_UTF8)
        members.emplace_back("\"y\":\"\xc0\x80\"");
    if (data.ConsumeBool())
        std::reverse(members.begin(), members.end());
    std::string text;
    for (const std::string& member : members)
        text += (text.empty() ? "" : ",") + (blank + member) + blank;
    text = blank + ("{" + text) + "}";
    if (mistake == Mistake::CUT)
        text.pop_back();
    if (mistake == Mistake::TWO_VALUES)
        text += "{}";
    return mistake == Mistake::ARRAY ? "[" + text + "]" : text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    FuzzedDataProvider data(bytes, size);
    readInPieces(fuzz::textOf(bytes, size), data);

    const auto mistake = data.ConsumeBool() ? Mistake::NONE
                                            : static_cast<Mistake>(data.ConsumeIntegralInRange(
                                                  1, static_cast<int>(Mistake::COUNT) - 1));
    Request meant;
    const std::string text = written(meant, data, mistake);
    const auto read = board::varlink::parseRequest(text);
    expect(read.has_value() == (mistake == Mistake::NONE),
           "a request is accepted exactly if it has no mistake");
    if (read)
        expect(isSame(*read, meant), "a request without a mistake is read as it was written");
    return 0;
}
