#include "apps/lumiset/validate/run.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/child_process.h"

namespace lumiset::app::validate {
namespace {

constexpr std::chrono::seconds kLimit{300};

std::string findingElsewhere(const Check& check, const Subject& subject, std::vector<std::string> words) {
    words.insert(words.end(), {subject.module.string(), "--check", check.name, "--seed", std::to_string(subject.seed),
                               "--in-this-process"});
    const platform::ChildEnd end = platform::runThisProgram(words, kLimit);
    if (end.timedOut) {
        return fmt::format("It does not end within {} seconds.", kLimit.count());
    }
    if (!end.crash.empty()) {
        return "It ends the program: " + end.crash + '.';
    }
    if (end.status == 0) {
        return {};
    }
    return end.output.empty() ? fmt::format("It ends the program with status {}.", end.status) : end.output;
}

}  // namespace

std::vector<const Check*> allChecks() {
    std::vector<const Check*> all;
    for (const auto& group : {libraryChecks(), frameChecks(), hostChecks(), presetChecks()}) {
        for (const Check& check : group) {
            all.push_back(&check);
        }
    }
    return all;
}

std::string findingHere(const Check& check, const Subject& subject) {
    platform::crashQuietly();
    try {
        check.run(subject);
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::vector<Verdict> runChecks(const std::vector<const Check*>& checks, const Subject& subject,
                               const std::vector<std::string>& command,
                               const std::function<void(const Verdict&)>& told) {
    std::vector<Verdict> verdicts;
    for (const Check* check : checks) {
        verdicts.push_back({check, findingElsewhere(*check, subject, command)});
        told(verdicts.back());
    }
    return verdicts;
}

std::string lineOf(const Verdict& verdict) {
    const bool holds = verdict.finding.empty();
    std::string text =
        fmt::format("{}  {:<11}{}\n", holds ? "holds " : "BROKEN", verdict.check->name, verdict.check->sentence);
    return holds ? text : text + fmt::format("{:<19}! {}\n", "", verdict.finding);
}

std::string summaryOf(const std::vector<Verdict>& verdicts, const Subject& subject) {
    const auto broken =
        std::count_if(verdicts.begin(), verdicts.end(), [](const Verdict& each) { return !each.finding.empty(); });
    if (broken == 0) {
        return fmt::format("\nAll {} checks hold.\n", verdicts.size());
    }
    return fmt::format("\n{} of {} checks are broken; \"--seed {}\" shows them again.\n", broken, verdicts.size(),
                       subject.seed);
}

bool allHold(const std::vector<Verdict>& verdicts) {
    return std::all_of(verdicts.begin(), verdicts.end(), [](const Verdict& each) { return each.finding.empty(); });
}

}  // namespace lumiset::app::validate
