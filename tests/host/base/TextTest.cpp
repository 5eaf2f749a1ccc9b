#include "base/Text.h"

#include <gtest/gtest.h>

TEST(Text, IsPrintableIfItIsWholeUtf8WithoutControlCharacters) {
    const std::pair<std::string, std::string> CASES[] = {
        {" ~\t\n\x1b\x7f", " ~\\x09\\x0a\\x1b\\x7f"},
        {"\u00A0\u00FC\u0800\uD7FF\uFFFD\U00010000\U0010FFFD",
         "\u00A0\u00FC\u0800\uD7FF\uFFFD\U00010000\U0010FFFD"},
        {"\xC2\x9F", "\\xc2\\x9f"},                                     // a C1 control character
        {"\xE2\x80\xA8\xE2\x80\xA9", "\\xe2\\x80\\xa8\\xe2\\x80\\xa9"}, // line separators
        {"\xC1\xBF", "\\xc1\\xbf"},                                     // longer than needed
        {"\xE0\x9F\xBF", "\\xe0\\x9f\\xbf"},                            // longer than needed
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},                            // a surrogate
        {"\xEF\xBF\xBF", "\\xef\\xbf\\xbf"},                            // not a character
        {"\xF4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},                   // past the last character
        {"\xF5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"},                   // never the first byte
        {"\xC3", "\\xc3"},                                              // cut off
        {"\xC3z\x80", "\\xc3z\\x80"},                                   // interrupted
        // Characters that set the text's direction, and their neighbors
        {"\u202A\u202E\u2066\u2069",
         "\\xe2\\x80\\xaa\\xe2\\x80\\xae\\xe2\\x81\\xa6\\xe2\\x81\\xa9"},
        {"\u061C\u200E\u200F", "\\xd8\\x9c\\xe2\\x80\\x8e\\xe2\\x80\\x8f"},
        {"\u061B\u061D\u200D\u2010\u202F\u2065\u206A",
         "\u061B\u061D\u200D\u2010\u202F\u2065\u206A"},
    };
    for (const auto& [text, shown] : CASES)
        EXPECT_EQ(board::printable(text), shown);
    EXPECT_EQ(board::columnsOf("a\u00FC\u3042"), 3U);
}
