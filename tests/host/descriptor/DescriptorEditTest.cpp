#include "descriptor/DescriptorEdit.h"

#include <csignal>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "base/Error.h"
#include "descriptor/DescriptorStore.h"
#include "support/Descriptors.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

using board::DescriptorEdit;
using board::DescriptorSource;
using board::EditManner;
using board::EditOutcome;
using board::TagImage;
using support::fromHex;
using support::TempDir;

namespace {

using Tags = std::vector<std::string>;

const std::string PRODUCT = "00 2D 00 08 12 34 AB CD ";
const std::string MAC_X = "00 01 00 0C 02 00 00 00 00 07 00 00 ";
const std::string MAC_Y = "00 01 00 0C 02 00 00 00 00 08 00 01 ";
const std::string ODD = "FF FE 00 07 01 02 03 "; // odd, which the library never writes
const std::string END = "00 00 00 04";

std::string bytesOf(const std::string& digits) {
    const TString<char> bytes = fromHex(digits);
    return std::string(bytes.data(), bytes.length());
}

std::string hexOf(const std::string& bytes) {
    return support::toHex(TString<char>(bytes.data(), static_cast<unsigned>(bytes.size())));
}

Tags tagsIn(const std::string& bytes) {
    CBoardDescr descriptor;
    const TagImage image(bytes);
    EXPECT_EQ(image.fault(), "");
    image.loadInto(descriptor);
    return support::tagsOf(descriptor);
}

/// The image after an edit, both in hexadecimal.
template <class Step>
std::string edited(const std::string& digits, Step step) {
    DescriptorEdit edit{TagImage(bytesOf(digits))};
    step(edit);
    return hexOf(edit.image());
}

board::Assignment assignment(const std::string& word) {
    return board::parseAssignment(word);
}

void addOne(DescriptorEdit& edit) {
    edit.add(assignment("9=u16:1"));
}

void agree(const std::vector<board::TagChange>&) {}

EditManner withoutBackup() {
    EditManner manner;
    manner.keepOld = false;
    return manner;
}

template <class Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (const board::Error& error) {
        return error.what();
    }
    return "no failure";
}

} // namespace

TEST(DescriptorEdit, CopiesUnchangedTagsByteForByte) {
    const std::string image = ODD + PRODUCT + MAC_X + END;
    EXPECT_EQ(edited(image, [](DescriptorEdit& edit) { edit.set(assignment("45=hex:0001")); }),
              ODD + "00 2D 00 06 00 01 " + MAC_X + END);
    EXPECT_EQ(
        edited(image, [](DescriptorEdit& edit) { edit.set(assignment("0xFFFE=hex:040506")); }),
        "FF FE 00 08 04 05 06 00 " + PRODUCT + MAC_X + END);
    EXPECT_EQ(edited(image, [](DescriptorEdit& edit) { edit.remove({45, 0}); }), ODD + MAC_X + END);
}

TEST(DescriptorEdit, EndsWithOneTerminatorAndPutsNothingBehindIt) {
    const std::string tag = "00 09 00 06 00 01 ";
    const std::string result = PRODUCT + tag + END;
    for (const std::string& image :
         {PRODUCT + END, PRODUCT + "FF FF FF FF", PRODUCT + "00 00", PRODUCT})
        EXPECT_EQ(edited(image, addOne), result) << image;
    EXPECT_EQ(
        edited(PRODUCT + END, [](DescriptorEdit& edit) { edit.insert(7, assignment("9=u16:1")); }),
        result);
    EXPECT_EQ(
        edited(PRODUCT + END, [](DescriptorEdit& edit) { edit.insert(0, assignment("9=u16:1")); }),
        tag + PRODUCT + END);
    EXPECT_EQ(edited("", addOne), tag + END);
}

TEST(DescriptorEdit, CountsAChangeOnlyIfTheTagLoadsDifferently) {
    const struct {
        std::string image;
        std::string word;
        std::size_t changes;
    } CASES[] = {
        {PRODUCT + END, "45=hex:1234abcd", 0},
        {"00 05 00 08 61 62 63 00 " + END, "5=text:abc", 0}, // the zero byte is padding
        {"00 05 00 07 61 62 63 " + END, "5=text:abc", 0},
        {"00 05 00 08 61 62 63 00 " + END, "5=text:ab", 1},
        {PRODUCT, "45=hex:1234abcd", 1}, // the terminator was missing
    };
    for (const auto& each : CASES) {
        DescriptorEdit edit{TagImage(bytesOf(each.image))};
        edit.set(assignment(each.word));
        EXPECT_EQ(edit.changes().size(), each.changes) << each.image << " " << each.word;
    }
}

TEST(DescriptorEdit, AddsAMacAddressBehindTheLastAndKeepsAll) {
    const std::pair<unsigned, const char*> INTERFACES[] = {{0, "1/8:02 00 00 00 0A FF 00 00"},
                                                           {3, "1/8:02 00 00 00 0A FF 00 03"},
                                                           {65535, "1/8:02 00 00 00 0A FF FF FF"}};
    const TagImage image(bytesOf(MAC_X + MAC_Y + PRODUCT + END));
    for (const auto& [interface, tag] : INTERFACES) {
        DescriptorEdit edit(image);
        edit.addMac("02:00:00:00:0A:ff", interface);
        EXPECT_EQ(tagsIn(edit.image()),
                  (Tags{"1/8:02 00 00 00 00 07 00 00", "1/8:02 00 00 00 00 08 00 01", tag,
                        "45/4:12 34 AB CD", "0/0:"}));
    }
    EXPECT_EQ(
        edited(PRODUCT + END, [](DescriptorEdit& edit) { edit.addMac("02:00:00:00:00:07", 0); }),
        PRODUCT + MAC_X + END);
}

TEST(DescriptorEdit, SetsAMacAddressAndKeepsItsInterfaceByDefault) {
    const auto to8 = [](std::optional<unsigned> interface) {
        return
            [interface](DescriptorEdit& edit) { edit.setMac(1, "02:00:00:00:00:09", interface); };
    };
    const std::string record = "00 01 00 0C 02 00 00 00 00 09 ";
    EXPECT_EQ(edited(MAC_X + MAC_Y + END, to8(std::nullopt)), MAC_X + record + "00 01 " + END);
    EXPECT_EQ(edited(MAC_X + MAC_Y + END, to8(0x1234)), MAC_X + record + "12 34 " + END);
    EXPECT_EQ(edited(MAC_X + "00 01 00 04 " + END, to8(2)), MAC_X + record + "00 02 " + END);
    EXPECT_NE(failureOf([&] {
                  edited(MAC_X + "00 01 00 04 " + END, to8(std::nullopt));
              }).find("has 0 bytes"),
              std::string::npos);
    EXPECT_EQ(failureOf([&] { edited(MAC_X + END, to8(2)); }), "ERR TAG '1:=MacAddress' NOT FOUND");
}

TEST(DescriptorStore, KeepsTheSizeOfAnImageFileThatHasRoom) {
    const std::string room(20, '\xFF');
    const std::string image = bytesOf(PRODUCT + MAC_X + END);
    const auto removeMac = [](DescriptorEdit& edit) { edit.remove({1, 0}); };
    const struct {
        std::string before;
        std::function<void(DescriptorEdit&)> step;
        std::string after;
    } CASES[] = {
        {image, removeMac, bytesOf(PRODUCT + END)},
        {image + room, removeMac, bytesOf(PRODUCT + END) + std::string(12, '\xFF') + room},
        {image + std::string(3, '\0'), removeMac, bytesOf(PRODUCT + END) + std::string(15, '\0')},
        {image + room, addOne,
         bytesOf(PRODUCT + MAC_X + "00 09 00 06 00 01 " + END) + room.substr(6)},
        {image, addOne, bytesOf(PRODUCT + MAC_X + "00 09 00 06 00 01 " + END)},
    };
    for (const auto& each : CASES) {
        const TempDir dir;
        dir.write("image", each.before);
        const EditOutcome outcome = editDescriptor(DescriptorSource::ofFile(dir.path("image")),
                                                   withoutBackup(), each.step, agree);
        EXPECT_TRUE(outcome.isWritten && !outcome.isDevice);
        EXPECT_EQ(hexOf(dir.read("image")), hexOf(each.after));
    }
}

TEST(DescriptorStore, WritesABoardsDeviceInPlaceAndLeavesWhatLiesBehind) {
    const TempDir dir;
    const std::string rest = "calibration";
    dir.write("eeprom", bytesOf(PRODUCT + MAC_X + END) + rest);
    std::filesystem::create_hard_link(dir.path("eeprom"),
                                      dir.path("same")); // a rename would separate the two
    editDescriptor(
        DescriptorSource::ofBoard(dir.path("eeprom"), 128, 512), withoutBackup(),
        [](DescriptorEdit& edit) { edit.set(assignment("45=u8:7")); }, agree);
    EXPECT_EQ(hexOf(dir.read("same")),
              hexOf(bytesOf("00 2D 00 06 07 00 " + MAC_X + END) + bytesOf("00 04") + rest));
}

TEST(DescriptorStore, RefusesAnImageThatIsNotSmallerThanTheDevice) {
    const TempDir dir;
    for (const unsigned size : {18U, 19U}) { // the new image has 18 bytes
        dir.write("eeprom", bytesOf(PRODUCT + END) + std::string(size - 12, '\xFF'));
        const std::string before = dir.read("eeprom");
        const std::string failure = failureOf([&] {
            editDescriptor(DescriptorSource::ofBoard(dir.path("eeprom"), 128, size),
                           withoutBackup(), addOne, agree);
        });
        EXPECT_EQ(failure,
                  size == 18
                      ? dir.path("eeprom") +
                            ": the image would have 18 bytes (expected fewer than the device's 18)"
                      : "no failure");
        EXPECT_EQ(dir.read("eeprom") == before, size == 18);
    }
}

TEST(DescriptorStore, EditsADamagedImageOnlyIfForced) {
    const std::string whole = bytesOf(PRODUCT + MAC_X + ODD + END);
    const TempDir dir;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string cut = whole.substr(0, size);
        dir.write("image", cut);
        const bool isDamaged = TagImage(cut).isCorrupt();
        EditManner manner = withoutBackup();
        const std::string failure = failureOf([&] {
            editDescriptor(DescriptorSource::ofFile(dir.path("image")), manner, addOne, agree);
        });
        EXPECT_EQ(failure.find("CORRUPTED BOARD DESCRIPTOR") == 0, isDamaged)
            << size << ": " << failure;
        EXPECT_EQ(dir.read("image") == cut, isDamaged) << size;
        if (!isDamaged)
            continue;
        manner.force = true;
        editDescriptor(DescriptorSource::ofFile(dir.path("image")), manner, addOne, agree);
        EXPECT_GE(dir.read("image").size(), size);
        const Tags tags = tagsIn(dir.read("image"));
        ASSERT_GE(tags.size(), 2U) << size;
        EXPECT_EQ(tags[tags.size() - 2], "9/2:00 01") << size;
    }
}

TEST(DescriptorStore, WritesNothingWithoutAChangeOnADryRunOrAfterARefusal) {
    const TempDir dir;
    const std::string image = bytesOf(PRODUCT + END) + "rest";
    dir.write("eeprom", image);
    const auto refuse = [](const std::vector<board::TagChange>& changes) {
        throw board::Error(std::to_string(changes.size()) + " refused");
    };
    EditManner manner;
    manner.backup = dir.path("backup");
    const auto place = DescriptorSource::ofBoard(dir.path("eeprom"), 128, 512);
    const auto same = [](DescriptorEdit& edit) { edit.set(assignment("45=hex:1234abcd")); };
    EXPECT_TRUE(editDescriptor(place, manner, same, refuse).changes.empty());
    EXPECT_EQ(failureOf([&] { editDescriptor(place, manner, addOne, refuse); }), "1 refused");
    manner.dryRun = true;
    const EditOutcome outcome = editDescriptor(place, manner, addOne, refuse);
    EXPECT_EQ(outcome.changes.size(), 1U);
    EXPECT_FALSE(outcome.isWritten);
    EXPECT_EQ(dir.read("eeprom"), image);
    EXPECT_FALSE(std::filesystem::exists(dir.path("backup")));
}

TEST(DescriptorStore, KeepsTheOldImageFirstAndStopsIfItCanNot) {
    const TempDir dir;
    const std::string good = bytesOf(PRODUCT + END);
    const std::string damaged = good.substr(0, 8) + bytesOf("00 07 00 02");
    std::filesystem::create_symlink("image", dir.path("link"));
    const struct {
        std::string backup;
        std::string image;
        std::string failure; ///< empty: the backup holds the old image
    } CASES[] = {
        {"new", good, ""},
        {"empty", good, ""},
        {"new of damaged", damaged, ""},
        {"former", good, "exists already"},
        {"image", good, "is the image itself"},
        {"link", good, "is the image itself"},
        {".", good, "can't take a backup"},
        {"nowhere/backup", good, "can't make the backup"},
    };
    for (const auto& each : CASES) {
        dir.write("former", "former backup");
        dir.write("empty", "");
        dir.write("image", each.image);
        EditManner manner;
        manner.force = true;
        manner.backup = dir.path(each.backup);
        const auto open = support::openDescriptors();
        const std::string failure = failureOf([&] {
            editDescriptor(DescriptorSource::ofFile(dir.path("image")), manner, addOne, agree);
        });
        EXPECT_EQ(support::openDescriptors(), open) << each.backup;
        if (each.failure.empty()) {
            EXPECT_EQ(failure, "no failure") << each.backup;
            EXPECT_EQ(hexOf(dir.read(each.backup)), hexOf(each.image)) << each.backup;
        } else {
            EXPECT_NE(failure.find(each.failure), std::string::npos)
                << each.backup << ": " << failure;
            EXPECT_EQ(hexOf(dir.read("image")), hexOf(each.image)) << each.backup;
            EXPECT_EQ(dir.read("former"), "former backup") << each.backup;
        }
    }
}

TEST(DescriptorStore, RestoresTheOldImageIfADeviceTookOnlyPartOfTheNewOne) {
    const TempDir dir;
    const std::string image = bytesOf(PRODUCT + END) + std::string(100, '\xFF');
    dir.write("eeprom", image);
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &former), 0);
    const rlimit small{12, former.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string failure = failureOf([&] {
        editDescriptor(
            DescriptorSource::ofBoard(dir.path("eeprom"), 128, 112), withoutBackup(),
            [](DescriptorEdit& edit) { edit.insert(0, assignment("9=u16:1")); }, agree);
    });
    ::setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(failure, dir.path("eeprom") +
                           ": accepted only 12 of 18 bytes; the old image is in place again");
    EXPECT_EQ(hexOf(dir.read("eeprom")), hexOf(image));
}

TEST(DescriptorStore, ReportsADeviceThatDoesNotHoldWhatWasWritten) {
    const TempDir dir;
    const std::string old = bytesOf(PRODUCT + END);
    const struct {
        std::string found;
        std::string outcome;
    } CASES[] = {{old, "the old image is in place again"},
                 {bytesOf(MAC_X + END), "THE OLD IMAGE COULD NOT BE WRITTEN BACK EITHER"}};
    for (const auto& each : CASES) {
        dir.write("eeprom", old);
        dir.write("other", each.found);
        dir.write("backup", "");
        // The write then goes to a file that no longer has a name.
        const auto takeAway = [&](const std::vector<board::TagChange>&) {
            std::filesystem::rename(dir.path("other"), dir.path("eeprom"));
        };
        EditManner manner;
        manner.backup = dir.path("backup");
        EXPECT_EQ(failureOf([&] {
                      editDescriptor(DescriptorSource::ofBoard(dir.path("eeprom"), 128, 512),
                                     manner, addOne, takeAway);
                  }),
                  dir.path("eeprom") + ": does not hold what was written; " + each.outcome +
                      " and is kept in " + dir.path("backup"));
        EXPECT_EQ(dir.read("backup"), old);
    }
}

TEST(DescriptorStore, LosesNoEditOfTwoWriters) {
    constexpr int EDITS = 100;
    const TempDir dir;
    dir.write("image", bytesOf(END));
    const auto write = [&](const char* word) {
        for (int i = 0; i < EDITS; ++i)
            editDescriptor(
                DescriptorSource::ofFile(dir.path("image")), withoutBackup(),
                [&](DescriptorEdit& edit) { edit.add(assignment(word)); }, agree);
    };
    std::thread first(write, "9=u16:1");
    std::thread second(write, "10=u16:2");
    first.join();
    second.join();
    EXPECT_EQ(tagsIn(dir.read("image")).size(), 2 * EDITS + 1U);
}
