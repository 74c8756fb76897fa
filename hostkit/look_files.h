#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "hostkit/look.h"

namespace lumiset::hostkit {

/// Reads a look from a file of at most a megabyte. Throws `LookError`, with the file's name.
[[nodiscard]] Look loadLook(const EffectCatalogue& catalogue, const std::filesystem::path& file);

/// Writes a look to a file; one that is there is replaced whole or not at all. Throws `LookError`, also for a look that
/// `loadLook` would not take.
void saveLook(const EffectCatalogue& catalogue, const Look& look, const std::filesystem::path& file);

/// Where a person's own looks lie, files with the extension .lumilook: `lumiset/looks` below $XDG_DATA_HOME, or below
/// ~/.local/share. Empty where neither is set.
[[nodiscard]] std::filesystem::path ownLooksFolder();

/// A look that is called by its name.
struct KnownLook {
    Look look;
    std::filesystem::path file;  ///< empty: one of ours, which every program carries along
};

/// Ours first, then the person's own by the names of their files; files that cannot be read are told in `faults`.
[[nodiscard]] std::vector<KnownLook> knownLooks(const EffectCatalogue& catalogue, std::vector<std::string>& faults);

/// The look of that name, in any case of letters, the person's own before ours; or else the file. What has a slash or
/// the extension .lumilook in it is a file. Throws `LookError`.
[[nodiscard]] KnownLook findLook(const EffectCatalogue& catalogue, const std::string& fileOrName);

}  // namespace lumiset::hostkit
