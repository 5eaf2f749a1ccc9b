#pragma once

#include "IUnknown.h"

class InfoContainer;
class String;

/// An object that can report on itself in an information dump.
class IInfo : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Adds this object's rows to `container` and returns `container`. The header row has the given
    /// `level` and `index`, and `prefix` before its title; detail rows are on deeper levels and
    /// have no prefix. Adds nothing deeper than `maxLevel`, and nothing at all if `index` exceeds
    /// `maxIndex`. Cannot fail.
    virtual InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                   unsigned maxIndex, unsigned index,
                                   const String& prefix) const = 0;
};
