#include <utility>

#include <gtest/gtest.h>

#include "DID.h"
#include "IDriver.h"
#include "IInfo.h"
#include "support/Identifiers.h"

TEST(Identifiers, OfTheFrameworkKeepTheirBytes) {
    const std::pair<const VELM_UUID&, const char*> rows[] = {
        {IUnknown::IID(), "IUnknown 675f89818eca0e4b99aef16efb44bee2"},
        {IInfo::IID(), "IInfo 62e7d809177dfd48a9fe0043e775db78"},
        {IDriver::IID(), "IDriver 6a3b6dfba6d07a498900eb5b43fd30af"},
        {DID_BoardDescr(), "DID_BoardDescr 3e1d75873363954395870648e7e60baf"},
        {DID_Resource(), "DID_Resource f7707b4d69fe834cb2eb803a567bac43"}};
    for (const auto& [identifier, expected] : rows)
        EXPECT_EQ(support::shown(identifier), String(expected));
}
