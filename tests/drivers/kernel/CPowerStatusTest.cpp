#include "CPowerStatus.h"

#include "support/ScriptedKernel.h"

namespace {

using namespace support;

class CPowerStatusTest : public ScriptedKernel {
protected:
    CPowerStatus power{nullptr, "power", ENDPOINT};
};

TEST_F(CPowerStatusTest, OnlyTheFirstFourBytesCountAndFailureLeavesZero) {
    const std::pair<std::string, unsigned> rows[] = {
        {"1\n", 1}, {"12345", 1234}, {"-1", 4294967295}, {"-1234", 4294967173}, {"on", 0}};
    unsigned status = 7;
    expectPlainFailure(power.getPowerStatus(status));
    EXPECT_EQ(status, 0U);
    ASSERT_TRUE(power.open(error).isSuccess());
    EXPECT_EQ(asked, (std::vector<unsigned>{PATH, DESCRIPTION})) << "there is no third question";
    for (const auto& [content, expected] : rows) {
        dir.write("device", content);
        EXPECT_TRUE(power.getPowerStatus(status).isSuccess()) << content;
        EXPECT_EQ(status, expected) << content;
    }
}

} // namespace
