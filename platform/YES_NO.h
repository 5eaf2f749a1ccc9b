#pragma once

/// "yes" or "no", for reports.
const char* YES_NO(bool value);
