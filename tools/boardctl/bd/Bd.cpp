#include "bd/BdCommands.h"
#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addBd(CLI::App& app, Options& options) {
    CLI::App& bd =
        addGroup(app, "bd", "The board descriptor: show, check, compare, build, write and edit it");
    for (const auto add : {addBdShow, addBdDump, addBdBuild, addBdGet, addBdPut, addBdSet, addBdAdd,
                           addBdInsert, addBdRemove})
        add(bd, options);
    CLI::App& mac = addGroup(bd, "mac", "The MAC addresses in the descriptor");
    for (const auto add : {addBdMacRead, addBdMacEdit})
        add(mac, options);
    for (const auto add : {addBdWrite, addBdBackups, addBdCheck, addBdCompare})
        add(bd, options);
}

} // namespace boardctl
