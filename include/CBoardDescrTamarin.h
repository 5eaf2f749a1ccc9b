#pragma once

#include "BOARD_API.h"
#include "CBoardDescr.h"

/// The descriptor driver of a board with an EEPROM of 512 bytes on I2C bus 1 at address 0x50. The
/// driver reads the EEPROM 128 bytes at a time from "/sys/bus/i2c/devices/1-0050/eeprom".
class BOARD_API CBoardDescrTamarin : public CBoardDescr {
public:
    CBoardDescrTamarin();
    ~CBoardDescrTamarin() override;
};

/// Creates the board's descriptor driver, with an empty list. The caller owns the driver's only
/// reference. If construction throws, the memory is freed and the caller gets the exception. A host
/// that loads the library at run time finds this function by its name.
extern "C" BOARD_API CDriver* CREATE_BD();
