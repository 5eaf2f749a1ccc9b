#include "TYLock.h"

TYLock::~TYLock() = default;
