#pragma once

#include <functional>
#include <string>
#include <vector>

#include "apps/lumiset/validate/check.h"

namespace lumiset::app::validate {

struct Verdict {
    const Check* check;
    std::string finding;  ///< empty: the sentence holds
};

/// In the order in which they are run and told.
[[nodiscard]] std::vector<const Check*> allChecks();

/// Runs the check in this process, which a broken module may end. Empty: the sentence holds.
[[nodiscard]] std::string findingHere(const Check& check, const Subject& subject);

/// Runs each check in a process of its own: this program once more, with the words of `command` and
/// `MODULE --check NAME --seed N --in-this-process` behind them, which is to write what `findingHere` answers and to
/// end with status 0 where that is nothing and 1 where it is something. `told` hears each verdict at once.
std::vector<Verdict> runChecks(const std::vector<const Check*>& checks, const Subject& subject,
                               const std::vector<std::string>& command,
                               const std::function<void(const Verdict&)>& told);

/// A verdict as one line, with what was found on a second one.
[[nodiscard]] std::string lineOf(const Verdict& verdict);
/// How many hold, and how to see the others again.
[[nodiscard]] std::string summaryOf(const std::vector<Verdict>& verdicts, const Subject& subject);
[[nodiscard]] bool allHold(const std::vector<Verdict>& verdicts);

}  // namespace lumiset::app::validate
