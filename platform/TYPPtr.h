#pragma once

#include "TYLockHolder.h"
#include "TYPtr.h"

/// A counted reference to a driver's interface, with access to the driver's lock: `{ auto hold =
/// board.getLock(); board->getTagUInt(...); }`.
template <class T>
class TYPPtr : public TYPtr<T> {
public:
    using TYPtr<T>::TYPtr;

    /// Takes over a reference that the caller already holds, such as the result of a query.
    static TYPPtr adopt(T* object) {
        TYPPtr pointer;
        pointer.m_object = object;
        return pointer;
    }

    /// Holds the driver's lock, if it has one, until the holder is destroyed. The reference must
    /// not be empty.
    TYLockHolder getLock() const { return TYLockHolder(this->m_object->getLock()); }
};
