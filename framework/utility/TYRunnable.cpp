#include "TYRunnable.h"

TYRunnable::~TYRunnable() = default;
