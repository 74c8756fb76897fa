#pragma once

#include <memory>

#include "media/media.h"

namespace lumiset::media {

/// The pictures of `source` at a constant rate: at the times n / rate from its beginning the picture that is nearest
/// before it or half a picture behind, so that pictures are repeated and left out. A still picture is shown from
/// `options.startSeconds` for `options.durationSeconds`, once where that has no end.
/// `source` has been opened with `leadingIn(options)`.
std::unique_ptr<Source> pacedSource(std::unique_ptr<Source> source, Rational rate, const SourceOptions& options);

/// The options to have the picture that shows at the start.
SourceOptions leadingIn(SourceOptions options);

}  // namespace lumiset::media
