#include "bd/BdCommands.h"
#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

namespace {

void addBdMac(CLI::App& bd, Options& options) {
    CLI::App& mac = addGroup(bd, "mac", "The MAC addresses in the descriptor");
    addCommands(mac, options, {{"list", addBdMacRead, "get"}, {"set", addBdMacEdit, "add"}});
}

/// Adds --wait to the commands below `group` that lock a file or device.
void addLockWait(CLI::App& group, Options& options) {
    for (CLI::App* const command : group.get_subcommands([](const CLI::App*) { return true; })) {
        if (command->get_name() == "mac")
            addLockWait(*command, options);
        else if (command->get_name() != "backups")
            command
                ->add_option("--wait", options.lockSeconds,
                             "Longest time to wait for a lock that another program holds (default "
                             "10; 0 does not wait)")
                ->check(seconds())
                ->type_name("SECONDS");
    }
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
    addLockWait(bd, options);
}

} // namespace boardctl
