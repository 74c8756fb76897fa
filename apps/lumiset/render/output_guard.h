#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

namespace lumiset::app {

/// Keeps files that are there. Every command that writes one has it, and with it the option `--overwrite`.
class OutputGuard {
public:
    explicit OutputGuard(CLI::App& command);

    /// Returns where `output` may be written. What is one of `inputs` by another name or the same is refused; an
    /// existing file is replaced with `--overwrite`, or when the user says so on a terminal. Names with number patterns
    /// stand for all their files; "-" is standard output and input. Throws `UsageError` and `std::runtime_error`.
    void check(const std::string& output, const std::vector<std::string>& inputs) const;
    /// Only the first of these, for outputs that are replaced by rules of their own.
    static void refuseInputs(const std::string& output, const std::vector<std::string>& inputs);
    [[nodiscard]] bool overwrites() const { return m_overwrite; }

private:
    bool m_overwrite = false;
};

}  // namespace lumiset::app
