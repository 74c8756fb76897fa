#include "apps/lumiset/program.h"

#include <stdexcept>
#include <utility>

#include "platform/standard_streams.h"

namespace lumiset::app {

void Program::onChosen(CLI::App& command, std::function<int()> work) {
    command.callback([this, work = std::move(work)] { m_work = work; });
}

const hostkit::Module& Program::module() {
    if (!m_module) {
        m_module.emplace(modulePath);
    }
    return *m_module;
}

const hostkit::EffectCatalogue& Program::catalogue() {
    if (!m_catalogue) {
        m_catalogue.emplace(effectLibrary());
    }
    return *m_catalogue;
}

CLI::App& addCommand(CLI::App& parent, const std::string& name, const std::string& summary,
                     const std::string& introduction) {
    CLI::App* command = parent.add_subcommand(name, summary);
    command->group("Commands");
    command->preparse_callback([command, text = introduction.empty() ? summary + ".\n" : introduction](std::size_t) {
        command->description(text);
    });
    return *command;
}

std::vector<const CLI::App*> shownCommands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

void printText(const std::string& text) {
    if (!platform::writeText(platform::Stream::kOutput, text)) {
        throw std::runtime_error("The output cannot be written.");
    }
}

}  // namespace lumiset::app
