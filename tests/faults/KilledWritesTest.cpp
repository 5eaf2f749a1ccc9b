#include <filesystem>
#include <map>
#include <set>

#include "faults/BoardctlRuns.h"
#include "faults/Faults.h"

using faults::contains;
using support::Outcome;

namespace {

/// Commands that change the image or the board's device, killed at each of their calls.
class KilledWrites : public faults::BoardctlRuns {
protected:
    static std::ptrdiff_t timesIn(const std::string& text, const std::string& part) {
        const std::regex wanted(part);
        return std::distance(std::sregex_iterator(text.begin(), text.end(), wanted), {});
    }

    static bool isLeft(const std::string& name) {
        return contains(name, "unfinished-") || contains(name, ".new-content");
    }

    /// How many bytes `call` writes before the kill: one run for each number; 0 if not a write.
    static std::set<int> sizesFor(const std::string& call) {
        if (call.rfind("pwrite ", 0) == 0)
            return {0, 1, 6, 10, 32, 47, 64};
        return call.rfind("write ", 0) == 0 ? std::set<int>{0, 20} : std::set<int>{0};
    }
};

class KilledWrite : public faults::BoardctlRuns {};

} // namespace

TEST_P(KilledWrites, LeaveAFileOldOrNewAndADeviceThatTheNextRunRepairs) {
    const bool isDevice = contains(GetParam(), "#");
    const std::string image = isDevice ? "board/eeprom.bin" : "image";
    const std::string before = m_before.at(image);
    ASSERT_EQ(run("none 0 0").status, 0);
    const std::string after = files().at(image);
    ASSERT_NE(before, after);
    std::map<std::string, unsigned> counts;
    unsigned torn = 0, repaired = 0;
    for (const std::string& call : trace()) {
        const std::string name = call.substr(0, call.find(' '));
        const std::string number = std::to_string(++counts[name]);
        for (const int size : sizesFor(call)) {
            const std::string plan =
                name + " " + number + " " + std::to_string(faults::KILLED + size);
            SCOPED_TRACE(plan + ", " + call);
            EXPECT_EQ(run(plan).status, -1) << "was not killed";
            const std::string left = files().at(image);
            const bool isWhole = left == before || left == after;
            EXPECT_TRUE(isWhole || isDevice);
            torn += isWhole ? 0 : 1;
            for (const auto& [file, content] : files())
                if (file.rfind(contains(GetParam(), "@kept") ? "kept" : "state/boardctl/", 0) ==
                        0 &&
                    !isLeft(file)) {
                    EXPECT_EQ(content, before) << file << " is a backup, but not the old image";
                }
            EXPECT_EQ(runAgain(GetParam() + " --dry-run", "none 0 0").status, 0);
            EXPECT_EQ(files().at(image), left);
            const Outcome again = runAgain(GetParam(), "none 0 0");
            EXPECT_EQ(again.status, 0) << again.err;
            EXPECT_EQ(files().at(image), after);
            repaired += contains(again.err, "interrupted") ? 1 : 0;
            for (const auto& [file, content] : files())
                EXPECT_FALSE(isLeft(file)) << file << " is left";
            if (contains(GetParam(), "--record")) {
                EXPECT_EQ(timesIn(files().at("log"), "\"result\":\"written\""), 1);
            }
        }
    }
    EXPECT_EQ(repaired, torn);
    EXPECT_EQ(torn > 0, isDevice);
}

// Here another unit takes the place of the unit whose write was interrupted.
TEST_F(KilledWrite, LeavesAnotherUnitAloneAndRepairsItsOwnLater) {
    const std::string put = "bd put 5=text:UNIT-2 45=hex:00000001 # -y";
    EXPECT_EQ(run(put, "pwrite 1 " + std::to_string(faults::KILLED + 10), "").status, -1);
    const std::string torn = files().at("board/eeprom.bin");
    const std::string other = faults::OTHER_IMAGE + std::string(200, '\xFF');
    m_dir.write("board/eeprom.bin", other);
    const Outcome elsewhere = runAgain("bd put 0x800E=u32:1 # -y", "none 0 0");
    EXPECT_EQ(elsewhere.status, 0);
    EXPECT_EQ(elsewhere.err, "");
    EXPECT_EQ(files().at("board/eeprom.bin").substr(0, 76), other.substr(0, 76));
    m_dir.write("board/eeprom.bin", torn);
    EXPECT_TRUE(contains(runAgain("bd remove 2 # -y", "none 0 0").err, "interrupted"));
    // The tag that the interrupted write was to change has its old value again.
    EXPECT_EQ(runAgain("bd get 45 #", "none 0 0").out, "1234abcd\n");
}

TEST_F(KilledWrite, IsNotRepairedWithWhatAnotherUserMayHaveWritten) {
    const std::string put = "bd put 5=text:UNIT-2 45=hex:00000001 # -y";
    EXPECT_EQ(run(put, "pwrite 1 " + std::to_string(faults::KILLED + 10), "").status, -1);
    for (const auto& [file, content] : files())
        if (contains(file, "unfinished-"))
            std::filesystem::permissions(m_dir.path(file), std::filesystem::perms(0620));
    EXPECT_FALSE(contains(runAgain(put, "none 0 0").err, "interrupted"));
}

TEST_F(KilledWrite, IsRepairedEvenIfTheRepairsAreInterrupted) {
    const std::string other = "bd write @other # -y";
    EXPECT_EQ(run(other, "pwrite 1 " + std::to_string(faults::KILLED + 40), "").status, -1);
    const std::string put = "bd put 5=text:UNIT-2 45=hex:00000001 # -y";
    for (const int size : {30, 0, 7, 50}) {
        EXPECT_EQ(runAgain(put, "pwrite 1 " + std::to_string(faults::KILLED + size)).status, -1);
        EXPECT_EQ(runAgain(put, "fsync 1 " + std::to_string(faults::KILLED)).status, -1);
    }
    EXPECT_TRUE(contains(runAgain(put, "none 0 0").err, "interrupted"));
    const std::string repaired = files().at("board/eeprom.bin");
    for (const auto& [file, content] : files())
        EXPECT_FALSE(contains(file, "unfinished-")) << file << " is left";
    EXPECT_EQ(run(put, "none 0 0", "").status, 0);
    EXPECT_EQ(repaired, files().at("board/eeprom.bin"));
}

INSTANTIATE_TEST_SUITE_P(Commands, KilledWrites,
                         testing::Values("bd put 5=text:two 45=hex:00000001 -i @image",
                                         "bd put 5=text:another_unit 45=hex:00000001 # -y",
                                         "bd set 45=hex:00000001 # -y --backup @kept",
                                         "bd write @other -i @image --record @log --fill FF",
                                         "bd write @other # -y --record @log",
                                         "bd write @tags.json # -y -q"),
                         [](const auto& each) { return faults::nameOf(each.param); });
