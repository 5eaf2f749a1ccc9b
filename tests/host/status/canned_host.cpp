// Answers on the status socket of a profile as a host would, with canned answers. Each line of
// standard input is a JSON object, which it publishes: {"lit":MASK} as the LEDs, others as events.
// Exits at the end of the input.
// usage: canned-host PROFILE [SOCKET]

#include <iostream>
#include <string>

#include <poll.h>
#include <unistd.h>

#include "base/File.h"
#include "client/StatusPlaces.h"
#include "host/status/CannedAnswers.h"
#include "status/StatusServer.h"

int main(int argc, char** argv) {
    const std::string profile = board::reportedProfile(argc > 1 ? argv[1] : "board.toml");
    const support::CannedAnswers answers(profile);
    board::StatusServer server(argc > 2 ? argv[2] : board::statusPlaces(profile, true).front(),
                               answers);
    std::cout << "ready" << std::endl;
    std::string input;
    for (pollfd ready[] = {{STDIN_FILENO, POLLIN, 0}, {server.descriptor(), POLLIN, 0}};
         ::poll(ready, 2, -1) > 0;) {
        server.serve();
        char chunk[4096];
        ssize_t count = 0;
        if (ready[0].revents != 0 &&
            (count = board::tryReadOnce(STDIN_FILENO, chunk, sizeof chunk)) <= 0)
            return 0;
        input.append(chunk, static_cast<std::size_t>(count));
        for (auto end = input.find('\n'); end != std::string::npos; end = input.find('\n')) {
            const auto news = nlohmann::ordered_json::parse(input.substr(0, end));
            if (news.contains("lit"))
                server.publishLeds(news.at("lit").get<std::uint32_t>());
            else
                server.publish(news);
            input.erase(0, end + 1);
        }
    }
}
