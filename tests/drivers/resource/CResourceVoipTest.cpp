#include "CResourceVoip.h"

#include "CBoardDescr.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "InfoContainer.h"
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

/// Records when it is taken and released, and how many locks are held at once.
class RecordingLock : public TYLock {
public:
    RecordingLock(const char* name, std::vector<std::string>& events, int& held)
        : m_name(name), m_events(events), m_held(held) {}
    void lock() override {
        m_events.push_back(std::string("+") + m_name);
        EXPECT_EQ(++m_held, 1) << "two locks at once";
    }
    void unlock() override {
        m_events.push_back(std::string("-") + m_name);
        --m_held;
    }

private:
    const char* const m_name;
    std::vector<std::string>& m_events;
    int& m_held;
};

/// A descriptor that records when it is read, with a recorded lock.
class Descriptor : public CBoardDescr {
public:
    Descriptor(std::vector<std::string>& events, int& held)
        : m_lock("board", events, held), m_events(events) {}
    TYLock* getLock() override { return &m_lock; }
    XCode getTagUInt(BD::TagId id, unsigned index, unsigned& value, String& error) override {
        m_events.push_back("read");
        return CBoardDescr::getTagUInt(id, index, value, error);
    }

private:
    RecordingLock m_lock;
    std::vector<std::string>& m_events;
};

/// A repository with one driver or none, and a recorded lock.
class Repository : public IDriverRepository {
public:
    Repository(IDriver* driver, std::vector<std::string>& events, int& held)
        : m_driver(driver), m_lock("repository", events, held), m_events(events) {
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
    std::vector<std::string>& m_events;
};

class CResourceVoipTest : public testing::Test {
protected:
    ~CResourceVoipTest() override { PREFERENCES::CLEAR(); }

    std::vector<std::string> rows(const CResourceVoip& capacity, unsigned maxLevel,
                                  unsigned maxIndex) const {
        InfoContainer container;
        std::vector<std::string> shown;
        for (const auto& row :
             capacity.getInfo(container, maxLevel, 1, maxIndex, 2, "> ").getRows())
            shown.push_back(std::to_string(row.level) + " " + str(row.key) + "=" + str(row.value));
        return shown;
    }

    std::vector<std::string> events;
    int held = 0;
    Descriptor descriptor{events, held};
    Repository repository{&descriptor, events, held};
    String error;
};

TEST_F(CResourceVoipTest, FiguresComeFromTagsDefaultsAndPreferences) {
    const struct {
        const char* name;
        std::vector<std::pair<int, const char*>> tags;
        bool borderController;
        const char* preferences;
        unsigned dspChannels, sipLegs;
        int asked;
    } CASES[] = {
        {"both tags", {{0x800E, "00 00 00 78"}, {0x801A, "00 F0"}}, false, "", 120, 240, 0},
        {"no tag: the default follows the channels", {}, false, "", UNKNOWN, 30, 1},
        {"channels only", {{0x800E, "10"}}, false, "", 16, 32, 1},
        {"no legs in border-controller mode", {{0x800E, "10"}}, true, "", 16, 0, 0},
        {"stored zeros", {{0x800E, "00"}, {0x801A, "00"}}, false, "", UNKNOWN, 0, 0},
        {"tags of a wrong width",
         {{0x800E, "01 02 03 04 05"}, {0x801A, "01 02 03 04 05"}},
         false,
         "",
         UNKNOWN,
         30,
         1},
        {"preferences win",
         {{0x800E, "10"}, {0x801A, "20"}},
         false,
         "voip.dsp-channels=7\nvoip.sip-legs=0\n",
         7,
         0,
         0},
        {"the default follows a preference", {}, false, "voip.dsp-channels=7\n", 7, 14, 1},
    };
    const TempDir dir;
    for (const auto& each : CASES) {
        String ignored;
        for (const int id : {0x800E, 0x801A})
            static_cast<void>(descriptor.removeTag(id, 0, ignored));
        for (const auto& [id, data] : each.tags)
            EXPECT_TRUE(descriptor.addTag(id, fromHex(data)).isSuccess());
        dir.write("preferences", each.preferences);
        EXPECT_TRUE(PREFERENCES::LOAD(dir.path("preferences").c_str(), ignored).isSuccess());
        Capacity capacity(each.borderController);
        EXPECT_TRUE(capacity.setup(error).isSuccess()) << each.name;
        EXPECT_EQ(capacity.getDspChannelCount(), each.dspChannels) << each.name;
        EXPECT_EQ(capacity.getSipLegCount(), each.sipLegs) << each.name;
        EXPECT_EQ(capacity.asked, each.asked) << each.name;
    }
}

TEST_F(CResourceVoipTest, HoldsEachLockForOneCallAndNeverTwo) {
    Capacity capacity(false);
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    EXPECT_EQ(events,
              (std::vector<std::string>{"+repository", "find board-descr-driver", "-repository",
                                        "+board", "read", "-board", "+board", "read", "-board"}));
    EXPECT_EQ(descriptor.addRef(), 2U) << "no reference was kept";
    descriptor.release();
}

TEST_F(CResourceVoipTest, KeepsItsFiguresIfTheDescriptorIsNotFound) {
    Capacity capacity(false);
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    const Repository empty(nullptr, events, held);
    const XCode status = capacity.setup(error);
    EXPECT_EQ(status.getCode(), -9);
    EXPECT_EQ(str(status.getMessage()), "NOT HERE");
    EXPECT_EQ(str(error), "FAILED TO GET BOARD-DESCRIPTOR-DRIVER INTERFACE");
    EXPECT_EQ(capacity.getDspChannelCount(), UNKNOWN);
    EXPECT_EQ(capacity.getSipLegCount(), 30U);
}

TEST_F(CResourceVoipTest, ReportsWithinTheLimits) {
    using Rows = std::vector<std::string>;
    Capacity capacity(true);
    EXPECT_EQ(rows(capacity, 2, 2), (Rows{"1 > VoIP Resource=", "2 DSP Channels=0", "2 SIP Legs=0",
                                          "2 Transcoding=no", "2 Border Controller=yes"}));
    EXPECT_TRUE(capacity.setup(error).isSuccess());
    EXPECT_EQ(rows(capacity, 9, 9),
              (Rows{"1 > VoIP Resource=", "2 DSP Channels=4294967295", "2 SIP Legs=0",
                    "2 Transcoding=yes", "2 Border Controller=yes"}));
    EXPECT_EQ(rows(capacity, 1, 2), Rows{"1 > VoIP Resource="});
    EXPECT_EQ(rows(capacity, 0, 2), Rows{});
    EXPECT_EQ(rows(capacity, 2, 1), Rows{});
}

TEST_F(CResourceVoipTest, AnswersItsInterfacesUnderItsName) {
    Capacity capacity(false);
    EXPECT_EQ(str(capacity.getDriverName()), "resource-driver");
    IResourceVoip* const own = &capacity;
    expectFaces(capacity, *own, {{IResourceVoip::IID(), own}, {IBoardDescr::IID(), nullptr}});
}

} // namespace
