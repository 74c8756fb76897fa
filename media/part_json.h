#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "media/part.h"
#include "media/video_target.h"

namespace lumiset::media {

[[nodiscard]] std::string recordJson(const PartRecord& record);
/// Throws nlohmann::json::exception for what `recordJson` does not write.
[[nodiscard]] PartRecord recordFromJson(const nlohmann::json& json);

/// All that a container is told of a stream.
[[nodiscard]] std::string videoJson(const EncodedVideo& video);
/// Fills `codec`, which the result points at. Throws nlohmann::json::exception.
[[nodiscard]] EncodedVideo videoFromJson(const nlohmann::json& json, AVCodecParameters& codec);

}  // namespace lumiset::media
