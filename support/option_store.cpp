#include "support/option_store.h"

#include <exception>

#include "platform/settings_store.h"

namespace lumiset {
namespace {

constexpr const char* kSection = "Common";
constexpr std::array<const char*, kOptionCount> kNames = {"Forced CPU", "Knobs Drag Vertical", "Key Frames vs Presets",
                                                          "Crop Overscan"};

}  // namespace

std::array<bool, kOptionCount> readOptions() noexcept {
    std::array<bool, kOptionCount> values{};
    try {
        for (const auto& [name, value] : platform::readSettings(kSection)) {
            for (std::size_t option = 0; option < kOptionCount; ++option) {
                if (name == kNames[option]) {
                    values[option] = value == "yes";
                }
            }
        }
    } catch (const std::exception&) {
        return {};  // memory is exhausted, or the file cannot be read: as if nothing were stored
    }
    return values;
}

bool writeOption(Option option, bool value) noexcept {
    try {
        return platform::writeSetting(kSection, kNames[option], value ? "yes" : "no");
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace lumiset
