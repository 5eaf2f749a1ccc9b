#include "CBoardDescrTamarin.h"

CBoardDescrTamarin::CBoardDescrTamarin()
    : CBoardDescr("/sys/bus/i2c/devices/1-0050/eeprom", 128, 512) {}

CBoardDescrTamarin::~CBoardDescrTamarin() = default;

CDriver* CREATE_BD() {
    return new CBoardDescrTamarin;
}
