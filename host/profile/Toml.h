#pragma once

// The TOML parser, included with settings that make it safe for any input. Include it only through
// this header, so that all sources agree.

// The parser can report inputs such as "[!]", but they fail one of its assertions first. With
// NDEBUG, it promises the compiler instead that the assertions hold. Both are switched off here, so
// that the parser reports such inputs. The nesting limit counts nested values; a profile needs
// three.
#define TOML_ASSERT(expr) static_assert(true)
#define TOML_MAX_NESTED_VALUES 16
#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <toml++/impl/forward_declarations.h>
// The parser looks up character classes in blocks. In a block with a non-ASCII blank, it promises
// the compiler that no other character, such as one of U+00A1 to U+0499, ever occurs. Such
// characters do occur; the right answer for them is "not a blank".
#pragma push_macro("TOML_UNREACHABLE")
#undef TOML_UNREACHABLE
#define TOML_UNREACHABLE return false
#include <toml++/impl/unicode.h>
#pragma pop_macro("TOML_UNREACHABLE")
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")
