#include <algorithm>
#include <csignal>
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
using support::Outcome;
using support::TempDir;

namespace {

constexpr char USAGE[] = "Usage: ";

std::string fanProfile(const std::string& device) {
    return "[[fan]]\nname = \"fan\"\ndevice = \"" + device +
           "\"\ndescription = \"Main fan\"\nmaximum = 255\n";
}

// An image as the descriptor's writer makes it: an odd tag padded, two tags of one kind, the
// terminator.
const std::string IMAGE("\x00\x2D\x00\x08\x12\x34\xAB\xCD"
                        "\x00\x05\x00\x08one\x00"
                        "\x00\x05\x00\x04"
                        "\xFF\xFE\x00\x06\x80\xFF"
                        "\x00\x00\x00\x04",
                        30);

} // namespace

TEST(Boardctl, ShowsHelpOnStandardOutputForEveryCommand) {
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

TEST(Boardctl, AnswersAWrongCallWithUsageOnStandardErrorAndStatus2) {
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

TEST(Boardctl, NamesWhatAMistypedWordMayHaveMeant) {
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
         "blink takes COUNT and PERIOD_MS, such as: blink 3 500\n",
         2},
        {{"led", "status", "bi"}, "bi takes on or off\n", 2},
        {{"led", "status", "on"},
         "'on' is no action (expected the state 0, 1 or 2, bi on, bi off, or",
         2},
        {{"leds", "send", "-a", "b"},
         "there is no option '-a' (a word that begins with a dash goes behind --)\n",
         2},
        {{"leds", "preview", "--at", "3", "line", "ring"}, "--at: '3' (expected a tick of 1 to", 2},
        {{"help"}, "there is no command 'help'; did you mean '--help'?\n", 2},
        {{"help", "fan"}, "nothing takes the word 'help'; did you mean '--help'?\n", 2},
        {{"info", "--board"}, "--board: its value is missing\n", 2},
        {{"bd", "get", "Produktid"},
         "or a name such as ProductID); did you mean 'ProductID'?\n",
         2},
        {{"bd", "mac", "list", "x"},
         "nothing takes the word 'x' (an image file is named by -i)\n",
         2},
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

TEST(Boardctl, TakesBoardAndFormatBeforeAndAfterTheCommand) {
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

TEST(Boardctl, NamesFileLineAndKeyOfAWrongProfileAndStartsNothing) {
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

TEST(Boardctl, SetsAFanOnAnOrdinaryFileAndReadsItBack) {
    const TempDir dir;
    dir.write("fan.value", "0\n");
    dir.write("board.toml", fanProfile("fan.value"));
    const Outcome outcome = boardctl({"--board", dir.path("board.toml"), "fan", "high"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "fan: high\n");
    EXPECT_EQ(dir.read("fan.value"), "170" + std::string(13, '\0'));
}

TEST(Boardctl, FailsWhereAFanSilentlyRefusesOrCanNotBeUsed) {
    const TempDir dir;
    dir.write("deaf.toml", fanProfile("/dev/null"));
    dir.write("missing.toml", fanProfile("nowhere"));
    const Outcome deaf =
        boardctl({"--board", dir.path("deaf.toml"), "fan", "full", "--format", "json"});
    EXPECT_EQ(deaf.status, 1);
    EXPECT_NE(deaf.err.find("the device holds off after full was written"), std::string::npos)
        << deaf.err;

    const Outcome missing =
        boardctl({"--board", dir.path("missing.toml"), "fan", "--format", "json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(json::parse(missing.out)[0]["speed"].is_null());
    EXPECT_NE(json::parse(missing.out)[0]["error"].get<std::string>().find("No such file"),
              std::string::npos);
}

TEST(Boardctl, ReportsTheRestWhereOneDeviceFails) {
    const TempDir dir;
    dir.write("eeprom", IMAGE);
    dir.write("board.toml", fanProfile("nowhere") + "[descriptor]\ndevice = \"eeprom\"\n");
    const Outcome outcome =
        boardctl({"--board", dir.path("board.toml"), "info", "--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    const json info = json::parse(outcome.out);
    EXPECT_TRUE(info["fans"][0]["speed"].is_null());
    EXPECT_EQ(info["drivers"][0]["name"], "fan");
    EXPECT_TRUE(info["drivers"][0].contains("error"));
    EXPECT_EQ(info["drivers"][1]["name"], "board-descr-driver");
    EXPECT_EQ(info["drivers"][1]["rows"][1],
              json({{"level", 2}, {"index", 0}, {"key", "Platform ID"}, {"value", "12 34"}}));
}

TEST(Boardctl, BuildsFromADumpTheSameBytes) {
    const TempDir dir;
    dir.write("image", IMAGE);
    const Outcome dump = boardctl({"bd", "dump", dir.path("image")});
    ASSERT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(json::parse(dump.out)[0],
              json({{"id", 45}, {"name", "ProductID"}, {"length", 4}, {"data", "1234abcd"}}));
    dir.write("tags.json", dump.out);
    const Outcome build = boardctl({"bd", "build", dir.path("tags.json"), "-o", dir.path("copy")});
    EXPECT_EQ(build.status, 0) << build.err;
    EXPECT_EQ(dir.read("copy"), IMAGE);
}

TEST(Boardctl, DumpsOfACorruptImageTheGoodTagsAndSaysWhatIsWrong) {
    const TempDir dir;
    dir.write("image", IMAGE.substr(0, 8) + std::string("\x00\x07\x00\x02", 4));
    for (const std::string command : {"dump", "show", "raw"}) {
        const Outcome outcome = boardctl({"bd", command, dir.path("image"), "--format", "json"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.out.find(command == "show"  ? "12 34"
                                   : command == "raw" ? "12 34 ab cd"
                                                      : "1234abcd"),
                  std::string::npos);
        EXPECT_TRUE(json::accept(outcome.out)) << outcome.out;
        EXPECT_EQ(outcome.err,
                  "boardctl: CORRUPTED BOARD DESCRIPTOR: id=7 has invalid field length "
                  "(chunkLen=2 is too small) at pos=10\n");
    }
}

TEST(Boardctl, LeavesTheTargetAloneWhereTheTagsAreWrong) {
    const std::string tooLong(2 * 65532, '0');
    const struct {
        std::string tags;
        std::string message;
    } CASES[] = {
        {"[{]", "line 1"},
        {"{}", "is not an array"},
        {"[7]", "entry 0: is 7"},
        {R"([{"id":1,"data":""},{"data":""}])", "entry 1: has no \"id\""},
        {R"([{"id":1}])", "entry 0: has no \"data\""},
        {R"([{"id":65535,"data":""}])", "id 65535 is out of range (expected 1 to 65534, or 0"},
        {R"([{"id":-1,"data":""}])", "id -1 is out of range"},
        {R"([{"id":1.5,"data":""}])", "\"id\" is 1.5"},
        {R"([{"id":5,"data":"123"}])", "3 digits, an odd number"},
        {R"([{"id":5,"data":"12 4"}])", "not hexadecimal at character 2"},
        {R"([{"id":5,"data":"1234","length":3}])", "\"length\" is 3 but \"data\" has 2 bytes"},
        {R"([{"id":5,"dta":"12"}])", "unknown key \"dta\""},
        {R"([{"id":5,"data":"","data":"12"}])", "the key \"data\" stands twice"},
        {"[1e400]", "number overflow"},
        {R"([{"id":5,"data":""}])" + std::string("\0 ]", 3), "holds a zero byte at 20"},
        {R"([{"id":0,"data":"12"}])", "id 0 is the terminator"},
        {R"([{"id":5,"data":")" + tooLong + "\"}]",
         "65532 bytes, too long for a chunk (expected at most 65530)"},
        {R"([{"id":5,"data":")" + tooLong.substr(2) + "\"}]",
         "too long for a chunk (expected at most 65530)"},
    };
    const TempDir dir;
    for (const auto& each : CASES) {
        dir.write("tags.json", each.tags);
        dir.write("image", "as it was");
        const Outcome outcome =
            boardctl({"bd", "build", dir.path("tags.json"), "-o", dir.path("image")});
        EXPECT_EQ(outcome.status, 1) << each.message;
        EXPECT_NE(outcome.err.find(each.message), std::string::npos) << each.message << "\n"
                                                                     << outcome.err;
        EXPECT_EQ(dir.read("image"), "as it was") << each.message;
    }
}

TEST(Boardctl, TakesImagesUpTo64KiB) {
    const TempDir dir;
    // A chunk that fills all but the terminator's four bytes, and then one byte too many.
    std::string image =
        std::string("\x00\x05\xFF\xFC", 4) + std::string(65528, 'x') + std::string("\0\0\0\4", 4);
    dir.write("image", image);
    const Outcome dump = boardctl({"bd", "dump", dir.path("image")});
    EXPECT_EQ(dump.status, 0) << dump.err;
    EXPECT_EQ(json::parse(dump.out)[0]["length"], 65528);
    dir.write("image", image + "x");
    EXPECT_EQ(boardctl({"bd", "dump", dir.path("image")}).status, 1);
}

TEST(Boardctl, RunShowsTheBoardAndEndsInOrderOnATerminationSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        support::Program program({BOARDCTL, "run", "--format", "json"});
        ASSERT_TRUE(program.waitForOutput("{\"event\":\"ready\"}\n"));
        program.signal(signal);
        const Outcome outcome = program.finish();
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        for (const std::string text : {R"("event":"connected","kind":"fan")",
                                       R"("key":"Platform ID")", "{\"event\":\"stopped\"}\n"})
            EXPECT_NE(outcome.out.find(text), std::string::npos) << outcome.out;
    }
}

TEST(Boardctl, RunGoesOnWithoutADeviceThatFails) {
    const TempDir dir;
    dir.write("board.toml", fanProfile("nowhere") + "[descriptor]\ndevice = \"gone\"\n");
    const Outcome outcome = boardctl({"--board", dir.path("board.toml"), "run", "--for", "0"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const std::string text : {"board.toml:3: fan[0].device: ", "FAILED TO OPEN DEVICE"})
        EXPECT_NE(outcome.err.find(text), std::string::npos) << text << "\n" << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 2) << outcome.err;
    EXPECT_NE(outcome.out.find("ready\nstopped\n"), std::string::npos) << outcome.out;
}

TEST(Boardctl, MakesASimulatedBoardThatItCanHostAndRefusesAFullFolder) {
    const TempDir dir;
    EXPECT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    const Outcome show = boardctl({"--board", dir.path("sim/board.toml"), "bd", "show"});
    EXPECT_EQ(show.status, 0) << show.err;
    EXPECT_NE(show.out.find("192.0.2.10"), std::string::npos) << show.out;

    EXPECT_NE(boardctl({"--board", dir.path("sim"), "info"})
                  .err.find("did you mean '" + dir.path("sim/board.toml")),
              std::string::npos);
    const Outcome again = boardctl({"sim", "create", dir.path("sim")});
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.err.find("not empty"), std::string::npos) << again.err;
}

TEST(Boardctl, FailsWhereItsOutputIsNotTaken) {
    for (const std::string command :
         {"info", "run"}) { // without a time limit: nobody watches any more
        const Outcome outcome = support::Program({BOARDCTL, command}, "/dev/full").finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.err.find("can't write to standard output"), std::string::npos)
            << outcome.err;
    }
}

TEST(Boardctl, ShowsForeignTextOnOneLineAndWithoutControlCharacters) {
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

TEST(Boardctl, GivesADocumentAlsoWhereNothingCouldBeStarted) {
    const Outcome outcome =
        boardctl({"info", "--board", "/nowhere/board.toml", "--format", "json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(json::parse(outcome.out)["error"],
              "/nowhere/board.toml: can't open: No such file or directory");
}

TEST(Boardctl, IsNotKeptByADeviceThatWaits) {
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

TEST(Boardctl, ReadsSensorsAndSaysWhichOnesThereAre) {
    const TempDir dir;
    dir.write("sensor", "45123\n");
    dir.write("board.toml", "[[thermal]]\nname='a'\ndevice='sensor'\nmaximum=85\n"
                            "[[thermal]]\nname='b'\ndevice='gone'\nmaximum=90\n");
    const std::string board = dir.path("board.toml");
    const Outcome both = boardctl({"--board", board, "temp", "--format", "json"});
    EXPECT_EQ(both.status, 1);
    EXPECT_EQ(json::parse(both.out)[0],
              json({{"name", "a"}, {"description", ""}, {"celsius", 45.123}, {"maximum", 85}}));
    EXPECT_TRUE(json::parse(both.out)[1]["celsius"].is_null());
    EXPECT_EQ(boardctl({"--board", board, "temp", "--name", "a"}).out,
              "a: 45.123 degrees Celsius, maximum 85\n");
    EXPECT_NE(boardctl({"--board", board, "temp", "--name", "c"}).err.find("(there are: a, b)"),
              std::string::npos);
    EXPECT_EQ(boardctl({"--board", board, "power"}).status, 1) << "the board has none";
}

TEST(Boardctl, SetsOverlaysAndBlinksALedAndGivesItBack) {
    const TempDir dir;
    ASSERT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    const auto led = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"--board", dir.path("sim/board.toml"), "led", "status"});
        return boardctl(words);
    };
    const auto held = [&] { return std::string(dir.read("sim/dev/status").c_str()); };
    EXPECT_EQ(led({"1"}).out, "status: 1\n");
    EXPECT_EQ(led({"bi", "on", "--for", "0"}).out, "status: 1\n");
    EXPECT_EQ(held(), "1");
    EXPECT_EQ(led({"blink", "2", "1"}).status, 0);
    EXPECT_EQ(held(), "1");
    EXPECT_EQ(led({"2"}).status, 0);
    const Outcome off = led({"bi", "off"});
    EXPECT_EQ(off.status, 0);
    EXPECT_NE(off.err.find("is switched off"), std::string::npos) << off.err;
    EXPECT_EQ(held(), "0");
    for (const auto& wrong : std::vector<std::vector<std::string>>{{"3"},
                                                                   {"on"},
                                                                   {"bi", "up"},
                                                                   {"blink", "2"},
                                                                   {"blink", "0", "10"},
                                                                   {"blink", "2", "-5"},
                                                                   {"1", "--for", "1"}})
        EXPECT_EQ(led(wrong).status, 2) << wrong[0];
    EXPECT_EQ(held(), "0") << "nothing was written";
}

TEST(Boardctl, WaitsForALedThatReadsAsBeforeJustAfterAWrite) {
    // A terminal is such a LED: it takes what is written, and gives line by line what stands here.
    const auto led = [](const std::vector<std::string>& words, const std::string& reads) {
        const int device = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::grantpt(device);
        ::unlockpt(device);
        const char* const name = ::ptsname(device);
        const std::string path = name ? name : "no terminal";
        const int held = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const std::string lines = reads + "1\n1\n1\n1\n"; // a read too many shall not wait
        EXPECT_EQ(::write(device, lines.data(), lines.size()), static_cast<ssize_t>(lines.size()));
        const TempDir dir;
        dir.write("board.toml",
                  "[[led]]\nname = 'slow'\nbi_status = true\ndevice = '" + path + "'\n");
        std::vector<std::string> call{"--board", dir.path("board.toml"), "led", "slow"};
        call.insert(call.end(), words.begin(), words.end());
        Outcome outcome = boardctl(call);
        ::close(held);
        ::close(device);
        return outcome;
    };
    const std::string former = "1\n1\n"; // to remember it: for boardctl and for the driver
    const Outcome overlay = led({"bi", "on", "--for", "0"}, former + "1\n2\n" + "2\n2\n1\n");
    EXPECT_EQ(overlay.out, "slow: 1\n") << overlay.err;
    // A 0 takes three reads: the second is the host's look at the device, of one byte.
    const std::string dark = "0\n00\n";
    const Outcome blinks =
        led({"blink", "1", "2"}, former + "1\n" + "1\n" + dark + dark + dark + "1\n");
    EXPECT_EQ(blinks.out, "slow: 1\n") << blinks.err;
}

TEST(Boardctl, GivesALedBackWhenASignalEndsTheBlinking) {
    const TempDir dir;
    ASSERT_EQ(boardctl({"sim", "create", dir.path("sim")}).status, 0);
    support::Program program({BOARDCTL, "--board", dir.path("sim/board.toml"), "led", "status",
                              "blink", "1000", "600000"});
    while (std::string(dir.read("sim/dev/status").c_str()) != "1")
        ::sched_yield();
    program.signal(SIGINT);
    EXPECT_EQ(program.finish().status, 0);
    EXPECT_STREQ(dir.read("sim/dev/status").c_str(), "0");
}
