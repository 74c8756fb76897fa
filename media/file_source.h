#pragma once

#include <memory>

#include "media/decoder.h"

namespace lumiset::media {

std::unique_ptr<Source> openFileSource(const Input& input, const SourceOptions& options);

}  // namespace lumiset::media
