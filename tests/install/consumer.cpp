// Constructs a driver of the linked library and reads an image with it: consumer IMAGE

#include <cstdio>

#include "CBoardDescr.h"
#include "TYPPtr.h"

int main(int, char** argv) {
    const TYPPtr<CBoardDescr> descriptor =
        TYPPtr<CBoardDescr>::adopt(new CBoardDescr(argv[1], 128, 512));
    String error;
    unsigned product = 0;
    const bool isRead = descriptor->readBD(error).isSuccess() &&
                        descriptor->getProductID(product, error).isSuccess();
    std::printf("product %04x %s\n", product, error.c_str());
    return isRead ? 0 : 1;
}
