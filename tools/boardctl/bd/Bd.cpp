#include "program/Command.h"
#include "program/Commands.h"

namespace boardctl {

void addBd(CLI::App& app, Options& options) {
    CLI::App& bd =
        addGroup(app, "bd", "The board descriptor: show, check, take apart, build, edit");
    for (const auto add : {addBdReports, addBdBuild, addBdEdit})
        add(bd, options);
}

} // namespace boardctl
