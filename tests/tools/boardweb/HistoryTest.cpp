#include "feed/History.h"

#include <gtest/gtest.h>

using boardweb::History;
using nlohmann::ordered_json;

namespace {

ordered_json fan(const ordered_json& rpm, const ordered_json& level) {
    return {{"kind", "fan"},
            {"name", "fan"},
            {"value", rpm},
            {"unit", rpm.is_null() ? ordered_json(nullptr) : ordered_json("rpm")},
            {"level", level}};
}

ordered_json sensor(const std::string& name, const ordered_json& celsius) {
    return {{"kind", "thermal"}, {"name", name}, {"value", celsius}, {"unit", "celsius"}};
}

template <class... Devices>
ordered_json statusOf(const Devices&... devices) {
    ordered_json list = ordered_json::array();
    (list.push_back(devices), ...);
    return {{"devices", list}};
}

const TYTime TIME(86400, 7000000);

/// Each series as the device's name, the unit and the values.
std::string valuesOf(const History& history) {
    std::string text;
    const auto json = ordered_json::parse(*history.text());
    for (const auto& series : json["series"])
        text += series["device"].get<std::string>() + " " + series["unit"].get<std::string>() +
                " " + series["values"].dump() + ";";
    return text;
}

} // namespace

TEST(History, HoldsSensorsAndFansOldestFirst) {
    History history;
    EXPECT_EQ(*history.text(), R"({"period_s":5,"end":null,"series":[]})");
    history.add(
        statusOf(sensor("a\"", 41.3), ordered_json{{"kind", "led"}, {"name", "led"}, {"value", 1}}),
        TIME);
    history.add(nullptr, TIME);
    history.add(statusOf(sensor("a\"", -3), "x"), TIME);
    EXPECT_EQ(*history.text(),
              R"({"period_s":5,"end":"1970-01-02T00:00:00.007Z","series":[{"device":"a\"",)"
              R"("kind":"thermal","unit":"celsius","values":[41.3,null,-3]}]})");
}

TEST(History, AFanHasItsLevelUntilItHasASpeed) {
    History history;
    for (const char* const level : {"off", "low", "high", "full", "odd"})
        history.add(statusOf(fan(nullptr, level)), TIME);
    EXPECT_EQ(valuesOf(history), "fan level [0,1,2,3,null];");
    history.add(statusOf(fan(1200, "high")), TIME);
    history.add(statusOf(fan(nullptr, "high")), TIME); // its tachometer can't be read
    EXPECT_EQ(valuesOf(history), "fan rpm [null,null,null,null,null,1200,null];");
}

TEST(History, ForgetsWhatIsOlderThanAnHour) {
    History history;
    history.add(statusOf(sensor("gone", 1)), TIME);
    for (std::size_t i = 0; i < History::MOST_VALUES; ++i)
        history.add(statusOf(sensor("a", i)), TIME);
    const auto series = ordered_json::parse(*history.text())["series"];
    ASSERT_EQ(series.size(), 1U);
    EXPECT_EQ(series[0]["values"].size(), History::MOST_VALUES);
    EXPECT_EQ(series[0]["values"].front(), 0);
    EXPECT_EQ(series[0]["values"].back(), History::MOST_VALUES - 1);
    ordered_json many = statusOf();
    for (std::size_t i = 0; i <= History::MOST_SERIES; ++i)
        many["devices"].push_back(sensor(std::to_string(i), 1));
    history.add(many, TIME);
    EXPECT_EQ(ordered_json::parse(*history.text())["series"].size(), History::MOST_SERIES);
}
