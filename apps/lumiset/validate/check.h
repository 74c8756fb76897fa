#pragma once

// What `lumiset validate` holds a module against. Each check is a sentence that a module keeps or breaks, and a
// function that tries to show that it is broken.

#include <cstdint>
#include <filesystem>
#include <random>
#include <span>
#include <stdexcept>

namespace lumiset::app::validate {

/// The module breaks the check's sentence; the text tells where.
class Broken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The module under test, and the seed that frames, sizes and damage are drawn from.
struct Subject {
    std::filesystem::path module;
    std::uint32_t seed = 1;
    [[nodiscard]] std::mt19937 random() const { return std::mt19937(seed); }
};

struct Check {
    const char* name;
    const char* sentence;
    /// Throws `Broken`. Each runs in a process of its own, so it may as well crash.
    void (*run)(const Subject& subject);
};

/// Tables, identity and lifetime of the module's objects.
[[nodiscard]] std::span<const Check> libraryChecks();
/// Frames of every size and layout.
[[nodiscard]] std::span<const Check> frameChecks();
/// Values, times, order, threads and memory.
[[nodiscard]] std::span<const Check> hostChecks();
/// Preset files.
[[nodiscard]] std::span<const Check> presetChecks();

}  // namespace lumiset::app::validate
