#pragma once

#include "IUnknown.h"

class InfoContainer;
class String;

/// An object that answers the information dump.
class IInfo : public IUnknown {
public:
    static const VELM_UUID& IID();

    /// Adds this object's rows to `container` and returns it. The header row stands at (`level`,
    /// `index`) with `prefix` before its title; details stand deeper and carry no prefix. Nothing
    /// deeper than `maxLevel` and nothing at all with `index` above `maxIndex` is written. Cannot
    /// fail.
    virtual InfoContainer& getInfo(InfoContainer& container, unsigned maxLevel, unsigned level,
                                   unsigned maxIndex, unsigned index,
                                   const String& prefix) const = 0;
};
