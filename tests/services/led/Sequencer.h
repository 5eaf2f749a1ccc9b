#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LedCtrl.h"
#include "support/LogRecorder.h"
#include "support/TempDir.h"

namespace sequencer {

using support::LogRecorder;
using support::TempDir;
using Lines = std::vector<std::string>;
using Row = LedCtrl::CmdDef;

enum { ON, OFF, BLINK, FLASH, UP, DOWN, STOP, DEFAULTS };

/// The sequencer without its thread, ticked by hand.
class Sequencer : public LedCtrl {
public:
    explicit Sequencer(const std::vector<Row>& rows, const std::vector<FileNameMap>& files = {},
                       AccessMethod method = ACCESS_FILES)
        : LedCtrl(rows.data(), static_cast<unsigned>(rows.size()), files.data(),
                  static_cast<unsigned>(files.size()), method, 100, 0x55555555, NotStarted()) {}
    using LedCtrl::executeCmd, LedCtrl::handleAction, LedCtrl::nextOutput, LedCtrl::openFiles;
    using LedCtrl::readCmd, LedCtrl::setupDefault, LedCtrl::setupFifo, LedCtrl::stopAction;
    using LedCtrl::testFifo, LedCtrl::update;

    void send(std::string line) { EXPECT_EQ(handleCmd(line.data()), 0); }
};

inline Row row(std::int32_t action, std::uint32_t mask, std::int32_t group = 0,
               std::int32_t timeMs = 0, bool isDefault = false, const char* word1 = "w") {
    return {word1, "x", 0, mask, action, group, timeMs, isDefault};
}

} // namespace sequencer
