#include "CThermalSensor.h"

#include <filesystem>

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

TEST_F(CThermalSensorTest, ThousandthsAreReadAsDegreesInSinglePrecision) {
    const struct {
        std::string content;
        float degrees;
    } CASES[] = {
        {"45500\n", 45.5F},
        {"-1250", -1.25F},
        {"", 0.0F},
        {"warm", 0.0F},
        {"16777217", 16777.216F}, // single precision drops the last digit first
        {"9999999999999999",
         2147483.75F},                   // sixteen digits without a terminator, clamped to 32 bits
        {"0000000000000012999", 0.012F}, // bytes after the record are ignored
    };
    ASSERT_TRUE(sensor.open(error).isSuccess());
    for (const auto& each : CASES) {
        dir.write("device", each.content);
        float degrees = -1.0F;
        EXPECT_TRUE(sensor.getTemperature(degrees).isSuccess()) << each.content;
        EXPECT_EQ(degrees, each.degrees) << each.content;
    }
}

TEST_F(CThermalSensorTest, FailureLeavesZeroDegrees) {
    float degrees = 1.0F;
    expectPlainFailure(sensor.getTemperature(degrees));
    EXPECT_EQ(degrees, 0.0F);
    ASSERT_TRUE(sensor.open(error).isSuccess());
    std::filesystem::remove(dir.path("device"));
    degrees = 1.0F;
    expectPlainFailure(sensor.getTemperature(degrees));
    EXPECT_EQ(degrees, 0.0F);
}

TEST_F(CThermalSensorTest, HasItsPublishedIdentityAndInterfaces) {
    IThermalSensor* const own = &sensor;
    expectFaces(sensor, *own, {{IThermalSensor::IID(), own}, {CThermalSensor::CID(), nullptr}});
    EXPECT_EQ(published(sensor.getDID()),
              "DID_ThermalSensor E0 75 D4 41 46 5A A4 41 9C 7C 74 A3 4A E2 98 E1");
    EXPECT_EQ(published(sensor.CID()),
              "CID_ThermalSensor B9 84 16 CC 40 80 E2 49 B1 75 84 DC 5B F6 2C D6");
    EXPECT_EQ(published(IThermalSensor::IID()),
              "IThermalSensor CA C8 C6 CC E3 E7 8A 45 91 41 3A A1 0D 53 88 79");
}

} // namespace
