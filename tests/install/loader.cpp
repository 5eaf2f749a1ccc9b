// Loads the library at run time, looks a factory up by name and creates the board's descriptor
// driver with it. Like a host that was compiled separately, it knows only interfaces.

#include <cstdio>

#include <dlfcn.h>

#include "IBoardDescr.h"
#include "IDriver.h"

int main() {
    void* const library = dlopen("libboarddrivers.so.1", RTLD_NOW);
    auto* const create =
        library ? reinterpret_cast<IDriver* (*)()>(dlsym(library, "CREATE_BD")) : nullptr;
    if (!create) {
        std::printf("%s\n", dlerror());
        return 1;
    }
    IDriver* const driver = create();
    void* face = nullptr;
    if (!driver->queryInterface(IBoardDescr::IID(), &face).isSuccess())
        return 1;
    auto* const board = static_cast<IBoardDescr*>(face);
    String error;
    const bool isRead = board->readBD(error).isSuccess(); // only a board has the device
    std::printf("%s\n", error.c_str());
    board->release();
    driver->release();
    return isRead ? 1 : 0;
}
