#pragma once

namespace board {

/// The parts of the page of a preview: the files in page/.
extern const char* const PAGE_HTML;
extern const char* const PAGE_STYLE;
extern const char* const PAGE_SCRIPT;

} // namespace board
