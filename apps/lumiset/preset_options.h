#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <string>
#include <utility>
#include <vector>

#include "apps/lumiset/assignment.h"
#include "apps/lumiset/command_line.h"

namespace lumiset::app {

/// The `preset` command and what is below it.
class PresetOptions {
public:
    explicit PresetOptions(CLI::App& app) {
        app.require_subcommand(1);
        m_save = app.add_subcommand("save", "Writes an effect's values to a preset file");
        m_save->add_option("FILE", m_saving.file, "what to write")->required();
        m_save->add_option("--effect,-e", m_saving.effect.name, "the effect")->required()->option_text("NAME");
        m_save->add_option("--preset,-p", m_saving.effect.preset, "preset to start from")->option_text("NAME");
        m_save->add_option("--set,-s", m_sets, "a value beside the preset's")
            ->allow_extra_args(false)
            ->option_text("\"Label=value\"");
        m_load = app.add_subcommand("load", "Shows the values in a preset file");
        m_load->add_option("FILE", m_loading.file, "what to read")->required();
        m_check = app.add_subcommand("check", "Tells of preset files whether they can be used, and for which effect");
        m_check->add_option("FILE", m_checking.files, "what to read")->required();
        for (CLI::App* command : {m_save, m_load, m_check}) {
            command->group("Commands");
        }
    }

    void finish(CommandLine& line) {
        if (*m_save) {
            for (const std::string& text : m_sets) {
                Assignment assignment = splitAssignment(text, "--set", "Label=value");
                m_saving.effect.settings.push_back({std::move(assignment.name), std::move(assignment.value)});
            }
            line.request = std::move(m_saving);
        } else if (*m_load) {
            line.request = std::move(m_loading);
        } else {
            line.request = std::move(m_checking);
        }
    }

private:
    CLI::App* m_save = nullptr;
    CLI::App* m_load = nullptr;
    CLI::App* m_check = nullptr;
    PresetSaveRequest m_saving;
    PresetLoadRequest m_loading;
    PresetCheckRequest m_checking;
    std::vector<std::string> m_sets;
};

}  // namespace lumiset::app
