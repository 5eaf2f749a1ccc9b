#include "CPowerStatus.h"

#include "support/ScriptedKernel.h"

namespace {

using namespace support;

class CPowerStatusTest : public ScriptedKernel {
protected:
    CPowerStatus power{nullptr, "power", ENDPOINT};
};

TEST_F(CPowerStatusTest, OnlyTheFirstFourBytesCount) {
    const struct {
        std::string content;
        unsigned status;
    } CASES[] = {{"1\n", 1}, {"12345", 1234}, {"-1", 4294967295}, {"-1234", 4294967173},
                 {"", 0},    {"on", 0}};
    ASSERT_TRUE(power.open(error).isSuccess());
    EXPECT_EQ(asked, (std::vector<unsigned>{PATH, DESCRIPTION})) << "there is no third question";
    for (const auto& each : CASES) {
        dir.write("device", each.content);
        unsigned status = 7;
        EXPECT_TRUE(power.getPowerStatus(status).isSuccess()) << each.content;
        EXPECT_EQ(status, each.status) << each.content;
    }
}

TEST_F(CPowerStatusTest, FailureLeavesZero) {
    unsigned status = 7;
    expectPlainFailure(power.getPowerStatus(status));
    EXPECT_EQ(status, 0U);
}

TEST_F(CPowerStatusTest, HasItsPublishedIdentityAndInterfaces) {
    IPowerStatus* const own = &power;
    expectFaces(power, *own, {{IPowerStatus::IID(), own}, {CPowerStatus::CID(), nullptr}});
    EXPECT_EQ(published(power.getDID()),
              "DID_PowerStatus E2 45 FA 69 E9 7F 4D 4B AC 53 E2 78 5F 48 60 9A");
    EXPECT_EQ(published(power.CID()),
              "CID_PowerStatus 56 D3 74 67 6C 55 E2 4D B8 B5 A4 6E 77 5A 1F 24");
    EXPECT_EQ(published(IPowerStatus::IID()),
              "IPowerStatus 70 D1 2F B8 93 ED 47 44 97 87 4C AE 0D D2 FB 34");
}

} // namespace
