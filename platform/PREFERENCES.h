#pragma once

#include "String.h"
#include "XCode.h"

/// The preference store: what an operator set to override the board's own figures. Any thread.
namespace PREFERENCES {

inline constexpr char VOIP_DSP_CHANNELS[] = "voip.dsp-channels";
inline constexpr char VOIP_SIP_LEGS[] = "voip.sip-legs";

/// Replaces the store by a text file of `key = value` lines; blank lines and lines that begin with
/// # count for nothing, of two lines with one key the later wins. A line without "=" is logged at
/// level 3 and left out. A file that can't be read fails with a text in `error` and leaves the
/// store as it was.
XCode LOAD(const String& path, String& error);

/// Empties the store.
void CLEAR();

/// Sets `value` to the preference `key`, or to `defaultValue` where it is not set. A text that is
/// no number (decimal, or hexadecimal after 0x), or a number outside `minimum`..`maximum`, is
/// logged at level 3 and counts as not set. Returns whether it was set. `value` may be the variable
/// the default came from.
bool READPREF_UINT(const char* key, unsigned& value, unsigned defaultValue, unsigned minimum,
                   unsigned maximum);

} // namespace PREFERENCES
