#include "YES_NO.h"

const char* YES_NO(bool value) {
    return value ? "yes" : "no";
}
