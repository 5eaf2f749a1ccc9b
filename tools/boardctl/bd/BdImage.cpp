#include "bd/BdImage.h"

#include "base/Error.h"
#include "descriptor/DescriptorImage.h"
#include "output/Messages.h"
#include "program/Board.h"

namespace boardctl {

std::string readBytes(const Options& options, const std::string& image) {
    TString<char> bytes;
    if (image.empty()) {
        const Board board(options);
        if (!board.host().descriptor())
            throw board::Error(board.profilePath() + ": the board has no descriptor");
        String error;
        if (!board.host().descriptor()->readRawBD(bytes, error).isSuccess()) {
            const std::string fault = board.host().faultOf(board::DESCRIPTOR_DRIVER);
            throw board::Error(error.isEmpty()
                                   ? fault
                                   : error.c_str() + (fault.empty() ? "" : " (" + fault + ")"));
        }
    } else {
        bytes = board::readImage(image);
    }
    return std::string(bytes.data(), bytes.length());
}

int withTags(const Options& options, const BdWords& words,
             const std::function<int(CBoardDescr&)>& action) {
    const std::string bytes = readBytes(options, words.image);
    CBoardDescr descriptor;
    String fault;
    const bool isGood =
        descriptor.importBD(TString<char>(bytes.data(), static_cast<unsigned>(bytes.size())), fault)
            .isSuccess();
    const int status = action(descriptor);
    if (isGood)
        return status;
    static_cast<void>(flushOutput());
    complain(fault.c_str());
    return FAILED;
}

} // namespace boardctl
