#pragma once

/// Marks the classes and functions that the library exports. All other symbols are hidden.
/// `abi/exports.txt` lists the exported names.
#define BOARD_API __attribute__((visibility("default")))
