#include <gtest/gtest.h>

#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CThermalSensor.h"
#include "DID.h"
#include "IBoardDescr.h"
#include "IResourceVoip.h"

// Hosts and drivers are compiled separately and compare identifiers by value.
TEST(Identifiers, KeepTheirNamesAndTheirBytesInMemory) {
    const std::pair<const VELM_UUID&, const char*> rows[] = {
        {IUnknown::IID(), "IUnknown 675f89818eca0e4b99aef16efb44bee2"},
        {IInfo::IID(), "IInfo 62e7d809177dfd48a9fe0043e775db78"},
        {IDriver::IID(), "IDriver 6a3b6dfba6d07a498900eb5b43fd30af"},
        {DID_BoardDescr(), "DID_BoardDescr 3e1d75873363954395870648e7e60baf"},
        {DID_Resource(), "DID_Resource f7707b4d69fe834cb2eb803a567bac43"},
        {CFanControl::DID(), "DID_FanControl 9eff29d963ca4d4e91e4aba61f54a9b2"},
        {CFanControl::CID(), "CID_FanControl 1fb5071888713e44a8b1b306e5c69a99"},
        {CLedControl::DID(), "DID_LedControl a4c5ef84d539544db9655f39705c91f5"},
        {CLedControl::CID(), "CID_LedControl c52ffa19eb81f043bfd142dc6a2e2254"},
        {CPowerStatus::DID(), "DID_PowerStatus e245fa69e97f4d4bac53e2785f48609a"},
        {CPowerStatus::CID(), "CID_PowerStatus 56d374676c55e24db8b5a46e775a1f24"},
        {CThermalSensor::DID(), "DID_ThermalSensor e075d441465aa4419c7c74a34ae298e1"},
        {CThermalSensor::CID(), "CID_ThermalSensor b98416cc4080e249b17584dc5bf62cd6"},
        {IFanControl::IID(), "IFanControl 66e7e04ab03c284ebc31d8dac47e682f"},
        {ILedControl::IID(), "ILedControl 461af2e227a5f74a893c0754034020a4"},
        {IPowerStatus::IID(), "IPowerStatus 70d12fb893ed474497874cae0dd2fb34"},
        {IThermalSensor::IID(), "IThermalSensor cac8c6cce3e78a4591413aa10d538879"},
        {IBoardDescr::IID(), "IBoardDescr 33a7789a53459c4bafd12dd619f8c4ad"},
        {IResourceVoip::IID(), "IResourceVoip b04748d61ed4b5459e586033c59085c3"}};
    for (const auto& [identifier, expected] : rows) {
        String text = String::format("%s ", identifier.getName());
        for (const unsigned byte : identifier.getValue().bytes)
            text.concatf("%02x", byte);
        EXPECT_STREQ(text.c_str(), expected);
    }
}
