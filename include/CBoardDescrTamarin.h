#pragma once

#include "BOARD_API.h"
#include "CBoardDescr.h"

/// The descriptor of the board whose EEPROM is on I2C bus 1 at address 0x50: 512 bytes, read 128 at
/// a time from "/sys/bus/i2c/devices/1-0050/eeprom".
class BOARD_API CBoardDescrTamarin : public CBoardDescr {
public:
    CBoardDescrTamarin();
    ~CBoardDescrTamarin() override;
};

/// Creates the board's descriptor driver, with an empty list. The caller owns its one reference. If
/// construction throws, the memory is freed and the exception passes on. A host finds the function
/// in the loaded library by this name.
extern "C" BOARD_API CDriver* CREATE_BD();
