#pragma once

#include "TYLockHolder.h"
#include "TYPtr.h"

/// A counted reference to a driver's interface, with its lock at hand:
/// `{ auto hold = board.getLock(); board->getTagUInt(...); }`.
template <class T>
class TYPPtr : public TYPtr<T> {
public:
    using TYPtr<T>::TYPtr;

    /// Takes over a reference that the caller holds already, as a query hands it out.
    static TYPPtr adopt(T* object) {
        TYPPtr pointer;
        pointer.m_object = object;
        return pointer;
    }

    /// Holds the driver's own lock until the holder is destroyed; nothing where the driver has
    /// none. The reference must not be empty.
    TYLockHolder getLock() const { return TYLockHolder(this->m_object->getLock()); }
};
