#include "base/Suggestion.h"

#include <gtest/gtest.h>

TEST(Suggestion, NamesTheNearestWordThatIsNear) {
    const struct {
        const char* word;
        std::vector<std::string> known;
        std::string nearest; ///< "" for none
    } CASES[] = {
        {"fna", {"led", "fan"}, "fan"},                           // two letters changed places
        {"chek", {"preview", "check"}, "check"},                  // one missing
        {"infoo", {"info"}, "info"},                              // one too many
        {"Produktid", {"DspChannels", "ProductID"}, "ProductID"}, // one wrong; case does not count
        {"prevwie", {"preview"}, "preview"},                      // two slips
        {"rpevwie", {"preview"}, ""},                             // three
        {"deivces", {"device", "devices"}, "devices"},            // the nearest
        {"device", {"devicd", "devics"}, "devicd"},               // the first of equally near ones
        {"ab", {"a", "b", "cd"}, ""},                             // half of the word is wrong
        {"ZAz", {"zaZ"}, "zaZ"},
        {"", {"", "a"}, ""},
    };
    for (const auto& each : CASES)
        EXPECT_EQ(board::didYouMean(each.word, each.known),
                  each.nearest.empty() ? "" : "; did you mean '" + each.nearest + "'?")
            << each.word;
}
