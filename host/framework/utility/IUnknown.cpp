#include "IUnknown.h"

#include "TYRunnable.h"

TYLock* IUnknown::getLock() {
    return nullptr;
}

IUnknown::~IUnknown() = default;

TYRunnable::~TYRunnable() = default;
