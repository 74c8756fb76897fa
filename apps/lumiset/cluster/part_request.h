#pragma once

#include <string>
#include <vector>

#include "apps/lumiset/program.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/render/render.h"

namespace lumiset::app {

/// Makes `request` one for a part of its output, as `text` says: "3/40". False where the part is there already, whole
/// and made in the same way, which the user is told. What an unfinished part has left is replaced; anything else only
/// with `--overwrite`, and one of `inputs`, the files read, never. Throws `UsageError`, media::MediaError and
/// std::runtime_error.
[[nodiscard]] bool takePart(Program& program, RenderRequest& request, const std::string& text,
                            const std::vector<std::string>& inputs, const OutputGuard& guard);

}  // namespace lumiset::app
