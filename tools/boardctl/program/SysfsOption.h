#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "program/WordChecks.h"

namespace boardctl {

/// Adds the option that names the root of sysfs to a command.
inline void addSysfsOption(CLI::App& command, std::string& sysfs) {
    command.add_option("--sysfs", sysfs, "Where sysfs is mounted; default /sys")
        ->check(notEmpty())
        ->type_name("DIR");
}

} // namespace boardctl
