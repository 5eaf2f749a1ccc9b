#include "CResourceVoip.h"

#include "CBoardDescr.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "PREFERENCES.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

namespace {

using namespace support;

constexpr unsigned UNKNOWN = 0xFFFFFFFF;

class Capacity : public CResourceVoip {
public:
    using CResourceVoip::CResourceVoip;
    unsigned getDefaultSipLegs() override {
        ++asked;
        return getDspChannelCount() == UNKNOWN ? 30 : 2 * getDspChannelCount();
    }
    int asked = 0;
};

class CResourceVoipTest : public testing::Test {
protected:
    CResourceVoipTest() {
        EXPECT_TRUE(DRIVER::INSTANCE()->registerDriver(&descriptor).isSuccess());
    }
    ~CResourceVoipTest() override {
        static_cast<void>(DRIVER::INSTANCE()->unregisterDriver("board-descr-driver"));
        PREFERENCES::CLEAR();
    }

    CBoardDescr descriptor;
    String error;
};

TEST_F(CResourceVoipTest, FiguresComeFromTagsDefaultsAndPreferences) {
    const char* const legs = "voip.sip-legs=0";
    const char* const channels = "voip.dsp-channels=7";
    const struct {
        const char* name;
        const char *channelsTag, *legsTag; // null: there is no such tag
        bool borderController;
        const char* preference;
        unsigned dspChannels, sipLegs;
        int asked; // calls of getDefaultSipLegs
    } CASES[] = {
        {"both tags", "00 00 00 78", "00 F0", false, "", 120, 240, 0},
        {"no tags: the default follows the channels", nullptr, nullptr, false, "", UNKNOWN, 30, 1},
        {"no legs in border-controller mode", "10", nullptr, true, "", 16, 0, 0},
        {"stored zeros", "00", "00", false, "", UNKNOWN, 0, 0},
        {"tags too wide", "01 02 03 04 05", "01 02 03 04 05", false, "", UNKNOWN, 30, 1},
        {"preferred legs", "10", "20", false, legs, 16, 0, 0},
        {"preferred channels", "10", "20", false, channels, 7, 32, 0},
        {"the default follows a preference", nullptr, nullptr, false, channels, 7, 14, 1},
    };
    const TempDir dir;
    for (const auto& each : CASES) {
        SCOPED_TRACE(each.name);
        String ignored;
        for (const auto& [id, data] :
             {std::pair(0x800E, each.channelsTag), {0x801A, each.legsTag}}) {
            static_cast<void>(descriptor.removeTag(id, 0, ignored));
            EXPECT_TRUE(!data || descriptor.addTag(id, fromHex(data)).isSuccess());
        }
        dir.write("preferences", each.preference);
        EXPECT_TRUE(PREFERENCES::LOAD(dir.path("preferences").c_str(), ignored).isSuccess());
        Capacity capacity(each.borderController);
        EXPECT_TRUE(capacity.setup(error).isSuccess());
        EXPECT_EQ(capacity.getDspChannelCount(), each.dspChannels);
        EXPECT_EQ(capacity.getSipLegCount(), each.sipLegs);
        EXPECT_EQ(capacity.asked, each.asked);
    }
}

TEST_F(CResourceVoipTest, HoldsEachLockInTurnAndKeepsItsFiguresIfTheDescriptorIsNotFound) {
    EXPECT_TRUE(descriptor.addTag(0x800E, fromHex("10")).isSuccess());
    Capacity capacity(false), another(false);
    const auto setUp = [&] { EXPECT_TRUE(capacity.setup(error).isSuccess()); };
    EXPECT_TRUE(waitsFor(*DRIVER::INSTANCE()->getLock(), setUp));
    EXPECT_TRUE(waitsFor(*descriptor.getLock(), setUp, [] {
        const TYLockHolder hold(
            DRIVER::INSTANCE()->getLock()); // would never return if it were held
    }));
    EXPECT_EQ(descriptor.addRef(), 3U) << "only the test and the repository have references";
    descriptor.release();

    EXPECT_TRUE(DRIVER::INSTANCE()->unregisterDriver("board-descr-driver").isSuccess());
    EXPECT_EQ(str(capacity.setup(error).getMessage()), "DRIVER 'board-descr-driver' NOT FOUND");
    EXPECT_EQ(str(error), "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE");
    EXPECT_EQ(capacity.getDspChannelCount(), 16U);
    EXPECT_EQ(capacity.getSipLegCount(), 32U);
    EXPECT_FALSE(another.setup(error).isSuccess());
    EXPECT_EQ(reportOf(another, {2, 1, 3, 3})[3], "2.3 Transcoding=no");
}

TEST_F(CResourceVoipTest, ReportsWithinTheLimits) {
    Capacity capacity(true);
    EXPECT_EQ(reportOf(capacity, {2, 1, 3, 3}),
              (Rows{"1.3 > VoIP Resource=", "2.3 DSP Channels=0", "2.3 SIP Legs=0",
                    "2.3 Transcoding=no", "2.3 Border Controller=yes"}));
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    EXPECT_EQ(reportOf(capacity, {2, 1, 3, 3})[1], "2.3 DSP Channels=4294967295");
    EXPECT_EQ(reportOf(capacity, {2, 1, 3, 3})[3], "2.3 Transcoding=yes");
    EXPECT_EQ(reportOf(capacity, {1, 1, 3, 3}), Rows{"1.3 > VoIP Resource="});
    EXPECT_EQ(reportOf(capacity, {0, 1, 3, 3}), Rows{});
    EXPECT_EQ(reportOf(capacity, {2, 1, 2, 3}), Rows{});
}

} // namespace
