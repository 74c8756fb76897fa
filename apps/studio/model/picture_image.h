#pragma once

#include <QImage>
#include <memory>

#include "apps/studio/core/picture_scaling.h"

namespace lumiset::studio {

/// The picture as Qt paints it, without a copy: the image holds on to it.
[[nodiscard]] inline QImage imageOf(const std::shared_ptr<const DisplayPicture>& picture) {
    auto* held = new std::shared_ptr<const DisplayPicture>(picture);
    return {picture->bytes.data(),
            picture->size.width,
            picture->size.height,
            4 * picture->size.width,
            picture->opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied,
            [](void* pointer) { delete static_cast<std::shared_ptr<const DisplayPicture>*>(pointer); },
            held};
}

}  // namespace lumiset::studio
