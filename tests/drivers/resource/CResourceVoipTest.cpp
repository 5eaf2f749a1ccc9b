#include "CResourceVoip.h"

#include "CBoardDescr.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "PREFERENCES.h"
#include "support/DriverFixtures.h"
#include "support/TempDir.h"

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

using Events = std::vector<std::string>;

class RecordingLock : public TYLock {
public:
    RecordingLock(const char* name, Events& events) : m_name(name), m_events(events) {}
    void lock() override { m_events.push_back("+" + m_name); }
    void unlock() override { m_events.push_back("-" + m_name); }

private:
    const std::string m_name;
    Events& m_events;
};

class Descriptor : public CBoardDescr {
public:
    explicit Descriptor(Events& events) : m_lock("board", events), m_events(events) {}
    TYLock* getLock() override { return &m_lock; }
    XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) override {
        m_events.emplace_back("read");
        return CBoardDescr::getTagUInt(id, index, value, error);
    }

private:
    RecordingLock m_lock;
    Events& m_events;
};

/// A repository with one driver or none.
class Repository : public IDriverRepository {
public:
    Repository(IDriver* driver, Events& events)
        : m_driver(driver), m_lock("repository", events), m_events(events) {
        DRIVER::SET_INSTANCE(this);
    }
    ~Repository() override { DRIVER::SET_INSTANCE(nullptr); }
    XCode registerDriver(IDriver*) override { return XCode(XCode::FAILURE); }
    XCode unregisterDriver(const String&) override { return XCode(XCode::FAILURE); }
    XCode queryDriver(const String& name, const VELM_UUID& iid, void** object) override {
        m_events.push_back("find " + str(name));
        return m_driver ? m_driver->queryInterface(iid, object) : XCode(-9, "NOT HERE");
    }
    void getDriverNames(VELM_List<String>&) override {}
    TYLock* getLock() override { return &m_lock; }

private:
    IDriver* const m_driver;
    RecordingLock m_lock;
    Events& m_events;
};

class CResourceVoipTest : public testing::Test {
protected:
    ~CResourceVoipTest() override { PREFERENCES::CLEAR(); }

    Events events;
    Descriptor descriptor{events};
    Repository repository{&descriptor, events};
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
        int asked; // for the default
    } CASES[] = {
        {"both tags", "00 00 00 78", "00 F0", false, "", 120, 240, 0},
        {"no tags: the default follows the channels", nullptr, nullptr, false, "", UNKNOWN, 30, 1},
        {"channels only", "10", nullptr, false, "", 16, 32, 1},
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

TEST_F(CResourceVoipTest, HoldsEachLockForOneCallAndKeepsItsFiguresIfTheDescriptorIsNotFound) {
    Capacity capacity(false);
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    EXPECT_EQ(events, (Events{"+repository", "find board-descr-driver", "-repository", "+board",
                              "read", "-board", "+board", "read", "-board"}));
    EXPECT_EQ(descriptor.addRef(), 2U) << "no reference was kept";
    descriptor.release();
    const Repository empty(nullptr, events);
    EXPECT_EQ(str(capacity.setup(error).getMessage()), "NOT HERE");
    EXPECT_EQ(str(error), "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE");
    EXPECT_EQ(capacity.getDspChannelCount(), UNKNOWN);
    EXPECT_EQ(capacity.getSipLegCount(), 30U);
}

TEST_F(CResourceVoipTest, ReportsWithinTheLimits) {
    using Rows = std::vector<std::string>;
    Capacity capacity(true);
    EXPECT_EQ(reportOf(capacity, {2, 1, 2, 2}),
              (Rows{"1.2 > VoIP Resource=", "2.2 DSP Channels=0", "2.2 SIP Legs=0",
                    "2.2 Transcoding=no", "2.2 Border Controller=yes"}));
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    EXPECT_EQ(reportOf(capacity, {2, 1, 2, 2})[1], "2.2 DSP Channels=4294967295");
    EXPECT_EQ(reportOf(capacity, {2, 1, 2, 2})[3], "2.2 Transcoding=yes");
    EXPECT_EQ(reportOf(capacity, {1, 1, 2, 2}), Rows{"1.2 > VoIP Resource="});
    EXPECT_EQ(reportOf(capacity, {0, 1, 2, 2}), Rows{});
    EXPECT_EQ(reportOf(capacity, {2, 1, 1, 2}), Rows{});
}

} // namespace
