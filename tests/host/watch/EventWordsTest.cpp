#include "watch/EventWords.h"

#include <gtest/gtest.h>

using namespace board::event;

TEST(EventWords, HaveATypeAndFieldsForPrograms) {
    const struct {
        board::Event event;
        std::string json;
        bool isTrouble = false;
    } TABLE[] = {
        {TemperatureOver{"t", static_cast<double>(85.1F), 85},
         R"(temperature-over {"name":"t","celsius":85.1,"maximum":85})", true},
        {TemperatureBack{"t", 82.5, 85},
         R"(temperature-back {"name":"t","celsius":82.5,"maximum":85})"},
        {DeviceGone{"fan", "f", "why"}, R"(device-gone {"kind":"fan","name":"f","error":"why"})",
         true},
        {DeviceBack{"led", "l"}, R"(device-back {"kind":"led","name":"l"})"},
        {PowerLost{"p"}, R"(power-lost {"name":"p"})", true},
        {PowerBack{"p", 1}, R"(power-back {"name":"p","status":1})"},
        {FanAstray{"f", "low", "full"}, R"(fan-astray {"name":"f","set":"low","speed":"full"})",
         true},
        {FanFollows{"f", "low", "low"}, R"(fan-follows {"name":"f","set":"low","speed":"low"})"},
        {FanFollows{"f", {}, "off"}, R"(fan-follows {"name":"f","set":null,"speed":"off"})"},
        {FanStopped{"f", "low"}, R"(fan-stopped {"name":"f","speed":"low","rpm":0})", true},
        {FanTurns{"f", "low", 1200}, R"(fan-turns {"name":"f","speed":"low","rpm":1200})"},
        {DescriptorChanged{2, {}}, R"(descriptor-changed {"tags":2})"},
        {DescriptorChanged{0, "bad"}, R"(descriptor-changed {"tags":0,"error":"bad"})", true},
    };
    for (const auto& row : TABLE) {
        const board::EventWords words = board::wordsOf(row.event);
        EXPECT_EQ(words.type + (" " + words.fields.dump()), row.json);
        EXPECT_EQ(words.isTrouble, row.isTrouble) << row.json;
    }
}
