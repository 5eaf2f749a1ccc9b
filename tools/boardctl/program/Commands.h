#pragma once

#include <CLI/CLI.hpp>

#include "program/Options.h"

/// The commands, in the order of the help. Each function adds one, or a group with the commands
/// below it.
namespace boardctl {

void addRun(CLI::App& app, Options& options);
void addStatus(CLI::App& app, Options& options);
void addWatch(CLI::App& app, Options& options);
void addInfo(CLI::App& app, Options& options);
void addCheck(CLI::App& app, Options& options);
void addProbe(CLI::App& app, Options& options);
void addSnapshot(CLI::App& app, Options& options);

void addFan(CLI::App& app, Options& options);
void addTemp(CLI::App& app, Options& options);
void addPower(CLI::App& app, Options& options);
void addLed(CLI::App& app, Options& options);

void addLeds(CLI::App& app, Options& options);
void addLedsCheck(CLI::App& leds, Options& options);
void addLedsPreview(CLI::App& leds, Options& options);
void addLedsSend(CLI::App& leds, Options& options);
void addLedsWhy(CLI::App& leds, Options& options);

void addButton(CLI::App& app, Options& options);
void addButtonWatch(CLI::App& button, Options& options);
void addButtonBridge(CLI::App& button, Options& options);
void addCpu(CLI::App& app, Options& options);
void addFirmware(CLI::App& app, Options& options);

void addBd(CLI::App& app, Options& options);

void addSim(CLI::App& app, Options& options);
void addSimCreate(CLI::App& sim, Options& options);
void addSimPress(CLI::App& sim, Options& options);

} // namespace boardctl
