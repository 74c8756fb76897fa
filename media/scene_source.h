#pragma once

#include <memory>
#include <string>

#include "media/media.h"

namespace lumiset::media {

/// True for "scene", "scene-full", "scene-cutout", and these with a colon and more behind them.
bool isSceneName(const std::string& input);

/// The built-in moving scene as a source. Throws MediaError for a size or a number that makes no sense.
std::unique_ptr<Source> openSceneSource(const std::string& input, const SourceOptions& options);

}  // namespace lumiset::media
