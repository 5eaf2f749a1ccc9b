#include "bd/BdCommands.h"
#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

namespace {

void addBdMac(CLI::App& bd, Options& options) {
    CLI::App& mac = addGroup(bd, "mac", "The MAC addresses in the descriptor");
    addCommands(mac, options, {{"list", addBdMacRead, "get"}, {"set", addBdMacEdit, "add"}});
}

} // namespace

void addBd(CLI::App& app, Options& options) {
    CLI::App& bd =
        addGroup(app, "bd", "The board descriptor: show, check, compare, build, write and edit it");
    addCommands(bd, options,
                {{"show", addBdShow, "raw"},
                 {"dump", addBdDump},
                 {"build", addBdBuild},
                 {"get", addBdGet},
                 {"put", addBdPut},
                 {"set", addBdSet},
                 {"add", addBdAdd},
                 {"insert", addBdInsert},
                 {"remove", addBdRemove},
                 {"mac", addBdMac},
                 {"write", addBdWrite},
                 {"backups", addBdBackups},
                 {"check", addBdCheck},
                 {"compare", addBdCompare}});
}

} // namespace boardctl
