#pragma once

#include "apps/lumiset/program.h"

// One function for each command of the program. It adds the command with its options to the command line and says
// what to do when it is chosen.

namespace lumiset::app {

void addListCommand(CLI::App& app, Program& program);
void addShowCommand(CLI::App& app, Program& program);
void addRenderCommand(CLI::App& app, Program& program);
void addJoinCommand(CLI::App& app, Program& program);
void addGalleryCommand(CLI::App& app, Program& program);
void addCompareCommand(CLI::App& app, Program& program);
void addExportCommands(CLI::App& app, Program& program);
void addScriptCommands(CLI::App& exports, Program& program);
void addPresetCommands(CLI::App& app, Program& program);
void addLookCommands(CLI::App& app, Program& program);
void addLookGalleryCommand(CLI::App& look, Program& program);
void addOptionsCommand(CLI::App& app, Program& program);
void addGPUCommands(CLI::App& app, Program& program);
void addDoctorCommand(CLI::App& app, Program& program);
void addValidateCommand(CLI::App& app, Program& program);
void addCompletionCommands(CLI::App& app, Program& program);
void addManCommand(CLI::App& app, Program& program);

}  // namespace lumiset::app
