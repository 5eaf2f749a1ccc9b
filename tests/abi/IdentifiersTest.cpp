#include <utility>

#include <gtest/gtest.h>

#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CThermalSensor.h"
#include "IBoardDescr.h"
#include "IResourceVoip.h"
#include "support/Identifiers.h"

TEST(Identifiers, OfTheLibraryKeepTheirBytesInMemory) {
    const std::pair<const VELM_UUID&, const char*> rows[] = {
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
    for (const auto& [identifier, expected] : rows)
        EXPECT_EQ(support::shown(identifier), String(expected));
}
