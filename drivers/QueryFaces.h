#pragma once

#include "VELM_UUID.h"
#include "XCode.h"

namespace query {

/// Hands out the face `Face` of `object` where `iid` names it.
template <class Face, class Object>
bool tryFace(Object& object, const VELM_UUID& iid, void** out) {
    if (iid != Face::IID())
        return false;
    if (out) {
        Face* const face = &object;
        face->addRef();
        *out = face;
    }
    return true;
}

/// The query of a driver on a framework base: the base answers first, then the driver's own faces
/// in the order given. An unknown identifier gives null and the plain failure; the base's own
/// failure is dropped.
template <class Base, class... Faces, class Object>
XCode queryFaces(Object& object, const VELM_UUID& iid, void** out) {
    XCode status = object.Base::queryInterface(iid, out);
    if (status.isSuccess() || (tryFace<Faces>(object, iid, out) || ...))
        return XCode();
    if (out)
        *out = nullptr;
    return XCode(XCode::FAILURE);
}

} // namespace query
