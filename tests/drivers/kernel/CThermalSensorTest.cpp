#include "CThermalSensor.h"

#include "support/ScriptedKernel.h"

namespace {

using namespace support;

class CThermalSensorTest : public ScriptedKernel {
protected:
    CThermalSensorTest() { answer(MAXIMUM, 85U); }
    CThermalSensor sensor{nullptr, "sensor", ENDPOINT};
};

TEST_F(CThermalSensorTest, MaximumIsReturnedUnchangedEvenBeforeConnection) {
    unsigned maximum = 1;
    EXPECT_TRUE(sensor.getMaxTemperature(maximum).isSuccess());
    EXPECT_EQ(maximum, 0U);
    ASSERT_TRUE(sensor.open(error).isSuccess());
    EXPECT_EQ(asked, (std::vector<unsigned>{PATH, DESCRIPTION, MAXIMUM}));
    EXPECT_TRUE(sensor.getMaxTemperature(maximum).isSuccess());
    EXPECT_EQ(maximum, 85U);
}

TEST_F(CThermalSensorTest, ThousandthsAreReadAsDegreesInSinglePrecisionAndFailureLeavesZero) {
    const std::pair<std::string, float> rows[] = {
        {"45500\n", 45.5F},
        {"-1250", -1.25F},
        {"warm", 0.0F},
        {"16777217", 16777.216F}, // rounded to single precision before the division
        // Sixteen characters without a terminator, clamped to 32 bits.
        {"9999999999999999", 2147483.75F},
        {"-999999999999999", -2147483.75F},
        {"0000000000000012999", 0.012F}, // bytes after the record are ignored
    };
    float degrees = 1.0F;
    expectPlainFailure(sensor.getTemperature(degrees));
    EXPECT_EQ(degrees, 0.0F);
    ASSERT_TRUE(sensor.open(error).isSuccess());
    for (const auto& [content, expected] : rows) {
        dir.write("device", content);
        EXPECT_TRUE(sensor.getTemperature(degrees).isSuccess()) << content;
        EXPECT_EQ(degrees, expected) << content;
    }
}

} // namespace
