#include "BD.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace BD {

String TAG_ID_TO_STRING(TagId id) {
    struct Name {
        TagId id;
        const char* name;
    };
    static constexpr Name NAMES[] = {
        {1, "MacAddress"}, {45, "ProductID"}, {0x800E, "DspChannels"}, {0x801A, "SipLegs"}};
    const auto* const found = std::find_if(std::begin(NAMES), std::end(NAMES),
                                           [id](const Name& row) { return row.id == id; });
    return found != std::end(NAMES) ? String(found->name)
                                    : String("Tag").concat(std::to_string(id).c_str());
}

} // namespace BD
