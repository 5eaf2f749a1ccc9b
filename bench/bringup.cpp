// Starts like a host process: loads the library, connects four drivers, reads the descriptor and
// determines the VoIP capacity. The argument is the path of a descriptor image.

#include "CBoardDescr.h"
#include "CFanControl.h"
#include "CLedControl.h"
#include "CPowerStatus.h"
#include "CResourceVoip.h"
#include "CThermalSensor.h"
#include "DRIVER.h"
#include "IDriverRepository.h"
#include "Kernel.h"
#include "TemporaryFile.h"

namespace {

class Capacity : public CResourceVoip {
public:
    Capacity() : CResourceVoip(false) {}
    unsigned getDefaultSipLegs() override { return 30; }
};

} // namespace

int main(int, char** arguments) {
    const TemporaryFile device("0");
    const Kernel kernel(device.path());
    IDriverRepository* const repository = DRIVER::INSTANCE();
    CFanControl fan(repository, "fan", Kernel::ENDPOINT);
    CThermalSensor sensor(repository, "thermal", Kernel::ENDPOINT);
    CPowerStatus power(repository, "power", Kernel::ENDPOINT);
    CLedControl led(repository, "led", Kernel::ENDPOINT);
    for (CKernelDriver* const driver :
         {static_cast<CKernelDriver*>(&fan), static_cast<CKernelDriver*>(&sensor),
          static_cast<CKernelDriver*>(&power), static_cast<CKernelDriver*>(&led)})
        Kernel::connect(*driver);
    String error;
    CBoardDescr board(arguments[1], 128, 512);
    succeed(board.readBD(error));
    succeed(repository->registerDriver(&board));
    Capacity capacity;
    succeed(capacity.setup(error));
    const bool isSettled = capacity.getDspChannelCount() == 120;
    succeed(repository->unregisterDriver(board.getDriverName()));
    return isSettled ? 0 : 1;
}
