// The checks of `lumiset validate` as a program of their own, for systems that the command line program is not built
// for: validate_module MODULE [--check NAME]... [--seed N].

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "apps/lumiset/validate/run.h"

namespace {

using namespace lumiset::app::validate;

constexpr int kBroken = 1;
constexpr int kWrongUsage = 2;

const Check* checkCalled(const char* name) {
    for (const Check* check : allChecks()) {
        if (std::strcmp(check->name, name) == 0) {
            return check;
        }
    }
    return nullptr;
}

int complain() {
    std::fputs("usage: validate_module MODULE [--check NAME]... [--seed N]\nThe checks:", stderr);
    for (const Check* check : allChecks()) {
        std::fprintf(stderr, " %s", check->name);
    }
    std::fputc('\n', stderr);
    return kWrongUsage;
}

}  // namespace

int main(int count, char** words) {
    Subject subject;
    std::vector<const Check*> checks;
    bool here = false;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--in-this-process") {
            here = true;
        } else if (word == "--check" && i + 1 < count) {
            checks.push_back(checkCalled(words[++i]));
        } else if (word == "--seed" && i + 1 < count) {
            subject.seed = static_cast<std::uint32_t>(std::strtoul(words[++i], nullptr, 10));
        } else if (subject.module.empty() && !word.starts_with("--")) {
            subject.module = word;
        } else {
            return complain();
        }
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(subject.module, error) ||
        std::find(checks.begin(), checks.end(), nullptr) != checks.end() || (here && checks.size() != 1)) {
        return complain();
    }
    if (here) {
        const std::string finding = findingHere(*checks.front(), subject);
        std::fputs(finding.c_str(), stdout);
        return finding.empty() ? 0 : kBroken;
    }
    subject.module = std::filesystem::absolute(subject.module);
    const std::vector<Verdict> verdicts =
        runChecks(checks.empty() ? allChecks() : checks, subject, {}, [](const Verdict& verdict) {
            std::fputs(lineOf(verdict).c_str(), stdout);
            std::fflush(stdout);
        });
    std::fputs(summaryOf(verdicts, subject).c_str(), stdout);
    return allHold(verdicts) ? 0 : kBroken;
}
