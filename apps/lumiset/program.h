#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostkit/effect_catalogue.h"
#include "hostkit/module.h"

namespace lumiset::app {

/// What all commands share: the module, loaded when a command first asks for it, and the work that was chosen. Every
/// command registers itself (commands.h): it adds its options to the command line and says with `onChosen` what to do.
class Program {
public:
    /// `work` is done once the whole command line has been read and `command` is the one that was given. It answers
    /// the exit status; what it throws becomes a message.
    void onChosen(CLI::App& command, std::function<int()> work);

    /// Does the chosen work and answers the exit status.
    [[nodiscard]] int run() const { return m_work(); }
    void setWork(std::function<int()> work) { m_work = std::move(work); }

    /// `--module`; empty: found by the host kit.
    std::string modulePath;
    [[nodiscard]] const hostkit::Module& module();
    [[nodiscard]] IEffectLibrary& effectLibrary() { return module().effectLibrary(); }
    [[nodiscard]] const hostkit::EffectCatalogue& catalogue();

private:
    std::function<int()> m_work;
    std::optional<hostkit::Module> m_module;
    std::optional<hostkit::EffectCatalogue> m_catalogue;
};

/// Adds a command below `parent`. `summary` stands in lists; the command's own help begins with `introduction`, or with
/// the summary where there is none.
CLI::App& addCommand(CLI::App& parent, const std::string& name, const std::string& summary,
                     const std::string& introduction = {});

/// The commands right below `app` that help lists.
[[nodiscard]] std::vector<const CLI::App*> shownCommands(const CLI::App& app);

/// Exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

/// Writes to standard output. Throws `std::runtime_error`.
void printText(const std::string& text);

}  // namespace lumiset::app
