#include "IUnknown.h"

TYLock* IUnknown::getLock() {
    return nullptr;
}

IUnknown::~IUnknown() = default;
