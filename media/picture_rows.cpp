#include "media/picture_rows.h"

#include <algorithm>

#include "media/pixel_rows.h"

namespace lumiset::media {
namespace {

// Row of a picture that a row of a view belongs to.
int pictureRow(int row, int field) {
    return field < 0 ? row : 2 * row + field;
}

// Planes' rows from sample `begin` on; grey stands for all three colours.
template <class Sample>
struct PlaneRows {
    Sample* rows[4];
    PlaneRows(const ZimgGraph::Planes& planes, int row, int begin, bool grey, bool alpha) {
        for (int i = 0; i < 4; i++) {
            rows[i] = reinterpret_cast<Sample*>(ZimgGraph::rowOf(planes, grey && i < 3 ? 0 : i, row)) + begin;
        }
        if (!alpha) {
            rows[3] = nullptr;
        }
    }
};

template <class Sample>
ZimgGraph::Rows packSamplesInto(Picture& picture, int field, bool grey, bool alpha) {
    return [&picture, field, grey, alpha](int row, int begin, int end, const ZimgGraph::Planes& planes) {
        const int y = pictureRow(row, field);
        end = std::min(end, picture.width);
        if (y < picture.height && begin < end) {
            const PlaneRows<Sample> from(planes, row, begin, grey, alpha);
            packPixels(from.rows, end - begin, samples<Sample>(picture, y) + 4 * begin);
        }
    };
}

// Rows and pixels beyond the picture repeat its last ones. `split` takes pixels, their number and the planes' rows.
template <class Sample, class PlaneSample, class Split>
ZimgGraph::Rows splitSamplesFrom(const Picture& picture, int field, bool alpha, Split split) {
    const int lastRow = field < 0 ? picture.height - 1 : (picture.height - 1 - field) / 2;
    return [&picture, field, alpha, lastRow, split](int row, int begin, int end, const ZimgGraph::Planes& planes) {
        const Sample* pixels = samples<Sample>(picture, pictureRow(std::min(row, lastRow), field));
        const int inside = std::max(std::min(end, picture.width), begin);
        const PlaneRows<PlaneSample> to(planes, row, begin, false, alpha);
        split(pixels + 4 * begin, inside - begin, to.rows);
        if (inside < end) {
            PlaneSample edge[4];
            PlaneSample* const edges[4] = {edge, edge + 1, edge + 2, alpha ? edge + 3 : nullptr};
            split(pixels + 4 * (picture.width - 1), 1, edges);
            for (int i = 0; i < (alpha ? 4 : 3); i++) {
                std::fill(to.rows[i] + inside - begin, to.rows[i] + end - begin, edge[i]);
            }
        }
    };
}

}  // namespace

ZimgGraph::Rows packInto(Picture& picture, int field, bool grey, bool alpha) {
    return picture.depth == Depth::kFloat ? packSamplesInto<float>(picture, field, grey, alpha)
                                          : packSamplesInto<std::uint8_t>(picture, field, grey, alpha);
}

ZimgGraph::Rows packYuvInto(Picture& picture, int field, bool alpha, const YuvWeights& weights) {
    return [&picture, field, alpha, weights](int row, int begin, int end, const ZimgGraph::Planes& planes) {
        const int y = pictureRow(row, field);
        end = std::min(end, picture.width);
        if (y < picture.height && begin < end) {
            const PlaneRows<std::uint16_t> from(planes, row, begin, false, alpha);
            packYuv(from.rows, end - begin, weights, picture.row(y) + 4 * begin);
        }
    };
}

ZimgGraph::Rows splitFrom(const Picture& picture, int field, bool alpha) {
    if (picture.depth == Depth::kFloat) {
        return splitSamplesFrom<float, float>(
            picture, field, alpha,
            [](const float* pixels, int count, float* const* planes) { splitPixels(pixels, count, planes); });
    }
    return splitSamplesFrom<std::uint8_t, std::uint8_t>(
        picture, field, alpha,
        [](const std::uint8_t* pixels, int count, std::uint8_t* const* planes) { splitPixels(pixels, count, planes); });
}

ZimgGraph::Rows splitToYuvFrom(const Picture& picture, int field, bool alpha, const YuvWeights& weights) {
    return splitSamplesFrom<std::uint8_t, std::uint16_t>(
        picture, field, alpha, [weights](const std::uint8_t* pixels, int count, std::uint16_t* const* planes) {
            splitToYuv(pixels, count, weights, planes);
        });
}

}  // namespace lumiset::media
