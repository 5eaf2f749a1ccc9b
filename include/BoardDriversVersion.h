#pragma once

/// The version of these headers, for use in `#if`. A program compiled with a lower minor or patch
/// version runs with this library. A program compiled with another major version does not.
#define BOARDDRIVERS_VERSION_MAJOR 1
#define BOARDDRIVERS_VERSION_MINOR 0
#define BOARDDRIVERS_VERSION_PATCH 0

/// A number that grows with the version: major * 10000 + minor * 100 + patch.
#define BOARDDRIVERS_VERSION                                                                       \
    (BOARDDRIVERS_VERSION_MAJOR * 10000 + BOARDDRIVERS_VERSION_MINOR * 100 +                       \
     BOARDDRIVERS_VERSION_PATCH)
