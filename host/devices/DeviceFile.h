#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "base/File.h"
#include "base/Result.h"

/// Finds out what a device file is, without opening it for writing.
namespace board {

/// Throws Error if the file is missing ("PATH: can't open: REASON") or is of another kind ("PATH:
/// is not EXPECTED").
void expectKind(const std::string& path, std::initializer_list<FileKind> kinds,
                const std::string& expected);

/// The file with the highest brightness of the LED whose brightness file is `path`.
std::string maximumFileOf(const std::string& path);

/// The number in `maximumFileOf(path)`; empty if that file does not exist. The kernel clamps a
/// higher brightness to this number and reports no error.
std::optional<Result<long long>> maximumOf(const std::string& path);

} // namespace board
