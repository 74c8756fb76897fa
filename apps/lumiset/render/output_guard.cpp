#include "apps/lumiset/render/output_guard.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <set>
#include <stdexcept>

#include "apps/lumiset/messages.h"
#include "apps/lumiset/usage_error.h"
#include "media/input_name.h"
#include "platform/file_identity.h"
#include "platform/standard_streams.h"

namespace lumiset::app {
namespace {

using Identity = platform::FileIdentity;

/// Those of the files that have contents to lose; pipes and devices have none.
std::set<Identity> identitiesOf(const std::vector<std::string>& files) {
    std::set<Identity> identities;
    for (const std::string& file : files) {
        if (const auto identity = file == "-" ? platform::identityOfInput() : platform::identityOf(file)) {
            identities.insert(*identity);
        }
    }
    return identities;
}

bool userSaysYes(const std::string& question) {
    tell(question + " [y/N] ");
    const int first = std::getchar();
    for (int rest = first; rest != '\n' && rest != EOF;) {
        rest = std::getchar();
    }
    return first == 'y' || first == 'Y';
}

}  // namespace

OutputGuard::OutputGuard(CLI::App& command) {
    command.add_flag("--overwrite,-y", m_overwrite, "replace what stands there; without it a terminal is asked");
}

void OutputGuard::refuseInputs(const std::string& output, const std::vector<std::string>& inputs) {
    const std::set<Identity> written = identitiesOf(media::filesNamed(output));
    for (const std::string& input : written.empty() ? std::vector<std::string>() : inputs) {
        for (const Identity& read : identitiesOf(input == "-" ? std::vector{input} : media::filesNamed(input))) {
            if (written.contains(read)) {
                throw UsageError(fmt::format("\"{}\" is what is read; write to another file.", output));
            }
        }
    }
}

void OutputGuard::check(const std::string& output, const std::vector<std::string>& inputs) const {
    if (output == "-") {
        return;
    }
    const std::vector<std::string> existing = media::filesNamed(output);
    if (identitiesOf(existing).empty()) {
        return;
    }
    refuseInputs(output, inputs);
    if (m_overwrite) {
        return;
    }
    const std::string found = existing.size() == 1 && existing.front() == output
                                  ? fmt::format("\"{}\" exists", output)
                                  : fmt::format("Pictures by the name of \"{}\" exist", output);
    const bool readsInput = std::find(inputs.begin(), inputs.end(), "-") != inputs.end();
    if (readsInput || !platform::isTerminal(platform::Stream::kInput) ||
        !platform::isTerminal(platform::Stream::kError)) {
        throw std::runtime_error(found + "; --overwrite replaces what is there.");
    }
    if (!userSaysYes(found + ". Replace?")) {
        throw std::runtime_error("Nothing was written.");
    }
}

}  // namespace lumiset::app
