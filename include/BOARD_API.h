#pragma once

/// Marks what the library offers to others; everything else in it is hidden. `abi/exports.txt`
/// lists the result.
#define BOARD_API __attribute__((visibility("default")))
