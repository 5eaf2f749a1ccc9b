#pragma once

/// Marks what the library exports; everything else in it is hidden. `abi/exports.txt` lists the
/// exported names.
#define BOARD_API __attribute__((visibility("default")))
