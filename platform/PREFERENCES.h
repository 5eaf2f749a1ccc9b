#pragma once

#include "String.h"
#include "XCode.h"

/// The preference store: an operator's settings, which override the board's own figures. Any thread
/// may call these functions.
namespace PREFERENCES {

inline constexpr char VOIP_DSP_CHANNELS[] = "voip.dsp-channels";
inline constexpr char VOIP_SIP_LEGS[] = "voip.sip-legs";

/// Replaces the store with the `key = value` lines of a text file. Blank lines and lines that begin
/// with # are ignored; if a key appears twice, the later line wins. A line without "=" is logged at
/// level 3 and skipped. If the file can't be read or is larger than 65536 bytes, fails with a text
/// in `error` and leaves the store unchanged.
XCode LOAD(const String& path, String& error);

/// Empties the store.
void CLEAR();

/// Sets `value` to the number in the preference `key`, or to `defaultValue` if the preference is
/// not set. A preference that is not a number (decimal, or hexadecimal after 0x) or is outside
/// `minimum`..`maximum` is logged at level 3 and counts as not set. Returns true if the preference
/// counts as set. The variables passed as `value` and `defaultValue` may be the same.
bool READPREF_UINT(const char* key, unsigned& value, unsigned defaultValue, unsigned minimum,
                   unsigned maximum);

} // namespace PREFERENCES
