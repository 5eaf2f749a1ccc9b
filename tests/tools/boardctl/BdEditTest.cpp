#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <fcntl.h>

#include "support/Program.h"
#include "support/TempDir.h"

using nlohmann::json;
using support::Outcome;
using support::TempDir;

namespace {

// A product, two MAC addresses, a text with a byte that a terminal would obey, the terminator.
const std::string IMAGE("\x00\x2D\x00\x08\x12\x34\xAB\xCD"
                        "\x00\x01\x00\x0C\x02\x00\x00\x00\x00\x07\x00\x00"
                        "\x00\x01\x00\x0C\x02\x00\x00\x00\x00\x08\x00\x01"
                        "\x00\x05\x00\x08one\x1B"
                        "\x00\x00\x00\x04",
                        44);

/// An image file, and a board whose device is an ordinary file. Backups go to the test's folder.
class BdEdit : public testing::Test {
protected:
    BdEdit() {
        ::setenv("XDG_STATE_HOME", m_dir.path("state").c_str(), 1);
        m_dir.write("image", IMAGE);
        m_dir.write("eeprom", IMAGE + std::string(512 - IMAGE.size(), '\xFF'));
        m_dir.write("board.toml", "[descriptor]\ndevice = \"eeprom\"\n");
    }

    /// Adds the image's path after "-i" and the profile's path after "--board".
    Outcome bd(std::vector<std::string> words) const {
        words.insert(words.begin(), {BOARDCTL, "bd"});
        for (std::size_t i = 0; i < words.size(); ++i)
            if (words[i] == "-i" || words[i] == "--board") {
                const std::string file = m_dir.path(words[i] == "-i" ? "image" : "board.toml");
                words.insert(words.begin() + static_cast<std::ptrdiff_t>(++i), file);
            }
        return support::Program(words).finish();
    }

    std::string macs() const { return bd({"mac", "list", "-i"}).out; }

    std::ptrdiff_t backups() const {
        const std::string folder = m_dir.path("state/boardctl");
        return std::filesystem::exists(folder)
                   ? std::distance(std::filesystem::directory_iterator(folder), {})
                   : 0;
    }

    const TempDir m_dir;
};

} // namespace

TEST_F(BdEdit, BuildsABoardEditsEveryTypeAndDumpsTheResult) {
    m_dir.write("tags.json",
                R"([{"id":45,"data":"00000000"}, {"id":9,"data":"00"}, {"id":10,"data":""},
        {"id":11,"data":""}, {"id":12,"data":""}, {"id":10,"data":""}, {"id":1,"data":"0200000000070000"},
        {"id":65534,"data":"80ff"}, {"id":0,"data":""}])");
    ASSERT_EQ(bd({"build", m_dir.path("tags.json"), "-o", m_dir.path("eeprom")}).status, 0);
    const Outcome set =
        bd({"set", "--board", "-y", "ProductID=hex:1234ABCD", "0x9=u8:255", "10.1=u16:0x1234",
            "11=u32:4294967295", "12=uint:7", "10.0=text:a=b:c"});
    EXPECT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(bd({"mac", "set", "0", "02:00:00:00:00:0a", "515", "--board", "-y"}).status, 0);
    EXPECT_EQ(backups(), 2); // two commands, two writes
    const json dump = json::parse(bd({"dump", "--board"}).out);
    std::vector<std::string> data;
    for (const json& tag : dump)
        data.push_back(tag["data"]);
    EXPECT_EQ(data, (std::vector<std::string>{"1234abcd", "ff00", "613d623a6300", "ffffffff",
                                              "00000007", "1234", "02000000000a0203", "80ff", ""}));
}

TEST_F(BdEdit, RejectsWordsThatMakeNoSenseWithStatus2AndWritesNothing) {
    const struct {
        std::vector<std::string> words;
        std::string message;
    } CASES[] = {
        {{"set", "45", "-i"}, "'45' is not an assignment (expected ID=TYPE:VALUE"},
        {{"set", "45=1234", "-i"}, "is not an assignment"},
        {{"set", "45=i8:1", "-i"},
         "type 'i8' is unknown (expected u8, u16, u32, uint, text or hex)"},
        {{"set", "45=u8:256", "-i"}, "'256' is not a number from 0 to 255"},
        {{"set", "45=u16:-1", "-i"}, "'-1' is not a number from 0 to 65535"},
        {{"set", "45=u32:4294967296", "-i"}, "is not a number from 0 to 4294967295"},
        {{"set", "45=uint:", "-i"}, "'' is not a number"},
        {{"set", "45=u8:0x", "-i"}, "'0x' is not a number"},
        {{"set", "45=hex:123", "-i"}, "not hexadecimal at character 3"},
        {{"set", "45=hex:1g", "-i"}, "not hexadecimal at character 1"},
        {{"set", "45=text:" + std::string(65531, 'x'), "-i"},
         "65531 bytes are too long for a chunk"},
        {{"set", "45=u8:1", "45.0=u8:2", "-i"}, "assigned twice"},
        {{"set", "45.x=u8:1", "-i"}, "occurrence 'x'"},
        {{"add", "0=text:", "-i"}, "'0' is not a tag"},
        {{"add", "65535=text:", "-i"}, "'65535' is not a tag"},
        {{"add", "9.0=u8:1", "-i"}, "not an occurrence"},
        {{"insert", "x", "9=u8:1", "-i"}, "position 'x'"},
        {{"remove", "Nothing", "-i"}, "'Nothing' is not a tag"},
        {{"get", "45", "--type", "mac", "-i"}, "type 'mac' is unknown"},
        {{"mac", "add", "02:00:00:00:00", "-i"}, "is not a MAC address"},
        {{"mac", "add", "02:00:00:00:00:7", "-i"}, "is not a MAC address"},
        {{"mac", "add", "02-00-00-00-00-07", "-i"}, "is not a MAC address"},
        {{"mac", "add", "02:00:00:00:00:07:08", "-i"}, "is not a MAC address"},
        {{"mac", "add", "02:00:00:00:00:0g", "-i"}, "is not a MAC address"},
        {{"mac", "add", "01:00:5e:00:00:01", "-i"}, "multicast"},
        {{"mac", "add", "ff:ff:ff:ff:ff:ff", "-i"}, "broadcast"},
        {{"mac", "add", "00:00:00:00:00:00", "-i"}, "all zero"},
        {{"mac", "set", "0", "02:00:00:00:00:07", "65536", "-i"}, "interface number '65536'"},
    };
    for (const auto& each : CASES) {
        const Outcome outcome = bd(each.words);
        EXPECT_EQ(outcome.status, 2) << each.message;
        EXPECT_NE(outcome.err.find(each.message), std::string::npos) << each.message << "\n"
                                                                     << outcome.err;
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(m_dir.read("image"), IMAGE);
    EXPECT_EQ(backups(), 0);
}

TEST_F(BdEdit, FailsWithAMessageAndWritesNothing) {
    const struct {
        std::vector<std::string> words;
        std::string message;
    } CASES[] = {
        {{"set", "45=u8:1", "6=u8:1", "-i"}, "ERR TAG '6:=Tag6' NOT FOUND"},
        {{"remove", "MacAddress.2", "-i"}, "ERR TAG '1:=MacAddress' NOT FOUND"},
        {{"mac", "set", "2", "02:00:00:00:00:07", "-i"}, "ERR TAG '1:=MacAddress' NOT FOUND"},
        {{"get", "45", "--type", "u16", "-i"}, "ERR WRONG TAG SIZE"},
        {{"add", "9=hex:" + std::string(920, '0'), "--board", "-y"}, ""},
        {{"add", "9=hex:" + std::string(928, '0'), "--board", "-y"},
         "the image would have 512 bytes (expected fewer than the device's 512)"},
    };
    for (const auto& each : CASES) {
        const Outcome outcome = bd(each.words);
        const bool fits = each.message.empty();
        EXPECT_EQ(outcome.status, fits ? 0 : 1) << each.message;
        if (fits)
            m_dir.write("eeprom", IMAGE);
        else
            EXPECT_NE(outcome.err.find(each.message), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(m_dir.read("image"), IMAGE);
    EXPECT_EQ(m_dir.read("eeprom"), IMAGE);
}

TEST_F(BdEdit, ShowsTheChangeOnADryRunAndNamesTheBackup) {
    const Outcome dry = bd({"set", "5=text:two", "-i", "--dry-run"});
    EXPECT_EQ(dry.out, "- 3 Tag5 (5): 6f6e651b\n+ 3 Tag5 (5): 74776f00  \"two\"\n" +
                           m_dir.path("image") + ": dry run; nothing was written\n");
    const Outcome odd = bd({"set", "ProductID=hex:12", "-i", "--dry-run"});
    EXPECT_NE(odd.out.find("ProductID (45): 1200  <- 2 bytes (expected 4)\n"), std::string::npos)
        << odd.out;
    EXPECT_EQ(m_dir.read("image"), IMAGE);

    const json done = json::parse(bd({"set", "5=text:two", "-i", "--format", "json"}).out);
    EXPECT_EQ(done["changes"], json({{{"position", 3},
                                      {"id", 5},
                                      {"name", "Tag5"},
                                      {"old", "6f6e651b"},
                                      {"new", "74776f00"}}}));
    EXPECT_EQ(done["written"], true);
    std::filesystem::copy_file(done["backup"].get<std::string>(), m_dir.path("copy"));
    EXPECT_EQ(m_dir.read("copy"), IMAGE);

    const Outcome again = bd({"set", "5=text:two", "-i"});
    EXPECT_NE(again.out.find("nothing was written"), std::string::npos) << again.out;
    EXPECT_EQ(backups(), 1);
}

TEST_F(BdEdit, AsksBeforeADeviceIsChanged) {
    const Outcome unasked = bd({"remove", "5", "--board"});
    EXPECT_EQ(unasked.status, 1);
    EXPECT_NE(unasked.err.find("not a terminal to ask on (expected -y)"), std::string::npos)
        << unasked.err;

    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(::grantpt(terminal) | ::unlockpt(terminal), 0);
    const std::string name = ::ptsname(terminal);
    const int held = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(held, 0);
    const std::string before = m_dir.read("eeprom");
    for (const std::string answer : {"\n", "no\n", "y\n"}) {
        ASSERT_EQ(::write(terminal, answer.data(), answer.size()),
                  static_cast<ssize_t>(answer.size()));
        const Outcome asked =
            support::Program({"/bin/sh", "-c",
                              "exec \"$0\" bd remove 5 --board \"$1\" --format json <\"$2\"",
                              BOARDCTL, m_dir.path("board.toml"), name})
                .finish();
        const bool isYes = answer == "y\n";
        EXPECT_EQ(asked.status, isYes ? 0 : 1) << answer << asked.err;
        EXPECT_NE(asked.err.find("- 3 Tag5 (5): 6f6e651b\nWrite this to "), std::string::npos)
            << asked.err;
        EXPECT_TRUE(json::accept(asked.out)) << asked.out;
        EXPECT_EQ(m_dir.read("eeprom") != before, isYes) << answer;
        EXPECT_EQ(m_dir.read("eeprom").size(), 512U);
    }
    ::close(held);
    ::close(terminal);
}

TEST_F(BdEdit, KeepsEveryMacAddressAndReadsTheNumberBackAsTyped) {
    EXPECT_EQ(bd({"mac", "add", "02:00:00:00:00:09", "65535", "-i"}).status, 0);
    EXPECT_EQ(bd({"mac", "set", "0", "02:00:00:00:00:0A", "3", "-i"}).status, 0);
    EXPECT_EQ(macs(), "0 02:00:00:00:00:0A 3\n1 02:00:00:00:00:08 1\n2 02:00:00:00:00:09 65535\n");
    EXPECT_EQ(bd({"mac", "get", "2", "-i"}).out, "02:00:00:00:00:09 65535\n");

    EXPECT_EQ(bd({"set", "1.1=u8:0", "-i"}).status, 0);
    const Outcome list = bd({"mac", "list", "-i", "--format", "json"});
    EXPECT_EQ(list.status, 1);
    EXPECT_EQ(json::parse(list.out)[1], json({{"index", 1},
                                              {"mac", nullptr},
                                              {"interface", nullptr},
                                              {"error", "MAC address 1 is not 8 bytes long"}}));
}

TEST_F(BdEdit, ReadsATagAsTheTypeAskedForWithoutControlBytes) {
    EXPECT_EQ(bd({"get", "ProductID", "-i"}).out, "1234abcd\n");
    EXPECT_EQ(bd({"get", "45", "--type", "u32", "-i"}).out, "305441741\n");
    EXPECT_EQ(bd({"get", "1.1", "-i"}).out, "0200000000080001\n");
    EXPECT_EQ(bd({"get", "5", "--type", "text", "-i"}).out, "one\\x1b\n");
    const Outcome missing = bd({"get", "6", "-i", "--format", "json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(json::parse(missing.out)["value"].is_null());
    EXPECT_EQ(json::parse(missing.out)["error"], "ERR TAG '6:=Tag6' NOT FOUND");
}

TEST_F(BdEdit, ChecksImagesAndFailsOnlyOnACorruptOne) {
    const Outcome sound = bd({"check", "--board"});
    EXPECT_EQ(sound.status, 0);
    EXPECT_EQ(sound.out, "4 tags in 44 of 512 bytes\n");

    m_dir.write("image", IMAGE + "left over");
    const Outcome warned = bd({"check", m_dir.path("image"), "--format", "json"});
    EXPECT_EQ(warned.status, 0);
    EXPECT_EQ(json::parse(warned.out)["findings"][0]["offset"], 44);

    m_dir.write("image", IMAGE.substr(0, 30));
    const Outcome corrupt = bd({"check", m_dir.path("image")});
    EXPECT_EQ(corrupt.status, 1);
    EXPECT_EQ(corrupt.out.find("at 20: corrupt: CORRUPTED BOARD DESCRIPTOR: id=1 "), 0U)
        << corrupt.out;
    EXPECT_EQ(bd({"remove", "1", "-i"}).status, 1);
    EXPECT_EQ(bd({"remove", "1", "-i", "--force"}).status, 0);
    EXPECT_EQ(bd({"check", m_dir.path("image")}).out, "1 tag in 12 of 30 bytes\n");
}
