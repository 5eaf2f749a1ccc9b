#include <algorithm>
#include <sched.h>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "support/Boardctl.h"
#include "support/Program.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::boardctl;
using support::fanProfile;
using support::Outcome;
using support::TempDir;

namespace {

constexpr char USAGE[] = "Usage: ";

} // namespace

TEST(CommandLine, ShowsHelpOnStandardOutputForEveryCommand) {
    for (const auto& words : std::vector<std::vector<std::string>>{{"--help"},
                                                                   {"run", "--help"},
                                                                   {"info", "--help"},
                                                                   {"fan", "--help"},
                                                                   {"bd", "--help"},
                                                                   {"bd", "show", "--help"},
                                                                   {"bd", "build", "--help"},
                                                                   {"bd", "set", "--help"},
                                                                   {"led", "--help"},
                                                                   {"leds", "preview", "--help"},
                                                                   {"sim", "create", "--help"}}) {
        const Outcome outcome = boardctl(words);
        EXPECT_EQ(outcome.status, 0) << words[0];
        EXPECT_NE(outcome.out.find(USAGE), std::string::npos) << words[0];
        EXPECT_EQ(outcome.err, "") << words[0];
        std::istringstream lines(outcome.out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST(CommandLine, AnswersAWrongCallWithUsageOnStandardErrorAndStatus2) {
    for (const auto& words : std::vector<std::vector<std::string>>{{},
                                                                   {"fly"},
                                                                   {"fan", "medium"},
                                                                   {"fan", "full", "low"},
                                                                   {"bd"},
                                                                   {"bd", "build", "tags.json"},
                                                                   {"bd", "show", ""},
                                                                   {"run", "--for", "-1"},
                                                                   {"run", "--for", "soon"},
                                                                   {"run", "--for", "nan"},
                                                                   {"info", "--format", "xml"},
                                                                   {"--board", "", "info"},
                                                                   {"sim", "create"}}) {
        const Outcome outcome = boardctl(words);
        const std::string call = words.empty() ? "(nothing)" : words[0];
        EXPECT_EQ(outcome.status, 2) << call;
        EXPECT_NE(outcome.err.find(USAGE), std::string::npos) << call << ": " << outcome.err;
        EXPECT_EQ(outcome.out, "") << call;
    }
}

TEST(CommandLine, NamesWhatAMistypedWordMayHaveMeant) {
    struct Case {
        std::vector<std::string> words;
        const char* message;
        int status;
    };
    const Case CASES[] = {
        {{"fna"}, "there is no command 'fna'; did you mean 'fan'?\n", 2},
        {{"fly"}, "there is no command 'fly'\n", 2},
        {{"bd", "mac", "lst"}, "there is no command 'lst'; did you mean 'list'?\n", 2},
        {{"--formt=json", "info"}, "there is no option '--formt'; did you mean '--format'?\n", 2},
        {{"fan", "--nmae", "x"},
         "there is no option '--nmae'; did you mean '--name'?\n",
         2}, // not: no speed 'x'
        {{"fan", "--bord", "x"}, "there is no option '--bord'; did you mean '--board'?\n", 2},
        {{"fan", "hihg"},
         "SPEED: 'hihg' (expected full, high, low or off); did you mean 'high'?\n",
         2},
        {{"led", "status", "bi", "of"}, "; did you mean 'off'?\n", 2},
        {{"led", "status", "blnk", "1", "1"}, "; did you mean 'blink'?\n", 2},
        {{"led", "status", "blink", "2"},
         "blink needs COUNT and PERIOD_MS, such as: blink 3 500\n",
         2},
        {{"led", "status", "bi"}, "bi needs on or off\n", 2},
        {{"led", "status", "on"},
         "'on' is not an action (expected the state 0, 1 or 2, bi on, bi off, or",
         2},
        {{"leds", "send", "-a", "b"},
         "there is no option '-a' (put -- before words that begin with a dash)\n",
         2},
        {{"leds", "preview", "--at", "3", "line", "ring"}, "--at: '3' (expected a tick of 1 to", 2},
        {{"help"}, "there is no command 'help'; did you mean '--help'?\n", 2},
        {{"help", "fan"}, "unexpected word 'help'; did you mean '--help'?\n", 2},
        {{"info", "--board"}, "--board: the value is missing\n", 2},
        {{"bd", "get", "Produktid"},
         "or a name such as ProductID); did you mean 'ProductID'?\n",
         2},
        {{"bd", "mac", "list", "x"}, "unexpected word 'x' (use -i to name an image file)\n", 2},
        {{"bd", "set", "1=02:00:00:00:00:07"}, "; `boardctl bd mac` writes addresses\n", 2},
        {{"bd", "add", "45=u23:1"},
         "(expected u8, u16, u32, uint, text or hex); did you mean 'u32'?\n",
         2},
        {{"led", "stauts"},
         "there is no led 'stauts' (there are: status); did you mean 'status'?\n",
         1},
    };
    for (const Case& each : CASES) {
        const Outcome outcome = boardctl(each.words);
        EXPECT_EQ(outcome.status, each.status) << each.message;
        EXPECT_NE(outcome.err.find(each.message), std::string::npos) << outcome.err;
    }
}

TEST(CommandLine, TakesBoardAndFormatBeforeAndAfterTheCommand) {
    const TempDir dir;
    dir.write("fan.value", "200\n");
    dir.write("board.toml", fanProfile("fan.value"));
    const std::string board = dir.path("board.toml");
    const json expected = {{{"name", "fan"}, {"description", "Main fan"}, {"speed", "high"}}};
    for (const auto& words :
         std::vector<std::vector<std::string>>{{"--board", board, "--format", "json", "fan"},
                                               {"fan", "--format", "json", "--board", board}})
        EXPECT_EQ(json::parse(boardctl(words).out), expected);
}

TEST(CommandLine, NamesFileLineAndKeyOfAWrongProfileAndStartsNothing) {
    const TempDir dir;
    dir.write("board.toml", fanProfile("fan.value") + "speed = 3\n");
    for (const std::string command : {"run", "info", "fan"}) {
        const Outcome outcome = boardctl({"--board", dir.path("board.toml"), command});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find("board.toml:6: "), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find("speed"), std::string::npos) << outcome.err;
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

TEST(CommandLine, FailsWhereItsOutputIsNotTaken) {
    for (const std::string command :
         {"info", "run"}) { // without a time limit: nobody watches any more
        const Outcome outcome = support::Program({BOARDCTL, command}, "/dev/full").finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.err.find("can't write to standard output"), std::string::npos)
            << outcome.err;
    }
}

TEST(CommandLine, ShowsForeignTextOnOneLineAndWithoutControlCharacters) {
    const TempDir dir;
    dir.write("sensor", "1");
    dir.write(
        "board.toml",
        "[[power]]\nname='L\xC3\xBC'\ndevice='sensor'\ndescription=\"x\\u001b[31m\\n\\u009B\"\n");
    const Outcome run = boardctl({"--board", dir.path("board.toml"), "run", "--for", "0"});
    EXPECT_NE(
        run.out.find(
            "power 'L\xC3\xBC': connected to 'kernel.L\xC3\xBC', x\\x1b[31m\\x0a\\xc2\\x9b, "),
        std::string::npos)
        << run.out;
    const Outcome named = boardctl({"fan", "--name", "a\nb\x1B"});
    EXPECT_EQ(named.err, "boardctl: there is no fan 'a\\x0ab\\x1b' (there are: fan)\n");
}

TEST(CommandLine, GivesADocumentAlsoWhereNothingCouldBeStarted) {
    const Outcome outcome =
        boardctl({"info", "--board", "/nowhere/board.toml", "--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(json::parse(outcome.out)["error"],
              "/nowhere/board.toml: can't open: No such file or directory");
}

TEST(CommandLine, IsNotKeptByADeviceThatWaits) {
    const TempDir dir;
    dir.write("fan", "0");
    dir.makePipe("pipe");
    dir.write("board.toml", fanProfile("fan") + "enable = \"pipe\"\n");
    EXPECT_NE(
        boardctl({"--board", dir.path("board.toml"), "fan"}).err.find("pipe: is not a device file"),
        std::string::npos);

    support::Program reader({BOARDCTL, "bd", "show", dir.path("pipe")});
    int writer = -1; // there is a reader once it can be opened
    while ((writer = ::open(dir.path("pipe").c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)) < 0)
        ::sched_yield();
    reader.signalUntilEnded(SIGTERM);
    ::close(writer);
    const Outcome outcome = reader.finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("Interrupted system call"), std::string::npos) << outcome.err;
}
