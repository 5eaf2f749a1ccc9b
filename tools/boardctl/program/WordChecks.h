#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

/// Checks of a word on the command line, mostly for CLI::Option::check or transform.
namespace boardctl {

/// For options that name something: rejects an empty word, which often comes from an unset shell
/// variable.
CLI::Validator notEmpty();

/// Accepts only one of `words`.
CLI::Validator oneOf(const std::vector<std::string>& words);

/// For a number of seconds, by default up to a year.
CLI::Validator seconds(double least = 0, double most = 366 * 86400);

/// For whole numbers. They are decimal even with leading zeros.
CLI::Validator decimal(long long least, long long most);

/// For a byte as two hexadecimal digits: "FF".
CLI::Validator hexByte();

} // namespace boardctl
