#include "base/Suggestion.h"

#include <gtest/gtest.h>

TEST(Suggestion, NamesTheNearestWordThatIsNear) {
    struct Case {
        const char* word;
        std::vector<std::string> known;
        const char* nearest; ///< "" for none
    };
    const Case CASES[] = {
        {"fna", {"led", "fan"}, "fan"},                           // two letters changed places
        {"tepm", {"temp"}, "temp"},                               //
        {"chek", {"preview", "check"}, "check"},                  // one missing
        {"infoo", {"info"}, "info"},                              // one too many
        {"Produktid", {"DspChannels", "ProductID"}, "ProductID"}, // one wrong; case does not count
        {"FAN", {"fan"}, "fan"},                                  //
        {"prevwie", {"preview"}, "preview"},                      // two slips
        {"rpevwie", {"preview"}, ""},                             // three
        {"deivces", {"devices", "device"}, "devices"},            // the nearest
        {"device", {"devicd", "devics"}, "devicd"},               // the first of equally near ones
        {"ab", {"a", "b", "cd"}, ""},                             // half of the word is wrong
        {"of", {"on", "off"}, "off"},                             //
        {"", {"", "a", "on"}, ""},                                //
        {"fan", {}, ""},                                          //
    };
    for (const Case& each : CASES) {
        const std::string nearest = each.nearest;
        EXPECT_EQ(board::didYouMean(each.word, each.known),
                  nearest.empty() ? "" : "; did you mean '" + nearest + "'?")
            << each.word;
    }
}
