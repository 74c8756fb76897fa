#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <zimg.h>

#include "media/plane_layout.h"

namespace lumiset::media {

/// What zimg has to know of an image.
struct ImageKind {
    int width = 0;  ///< a multiple of what chroma divides it by
    int height = 0;
    int regionWidth = 0;  ///< the part to take, from the top left corner; 0: all
    int regionHeight = 0;
    Family family = Family::kRgb;
    SampleType type = SampleType::kByte;
    int depth = 8;
    int log2ChromaW = 0;
    int log2ChromaH = 0;
    int field = -1;  ///< 0 a field of top rows, 1 of bottom rows, -1 a whole image
    PictureColor color;
    bool operator==(const ImageKind&) const = default;
};

/// One image to another of another format or size: a filter graph of zimg and its memory. Used from one thread at a
/// time.
class ZimgGraph {
public:
    /// Throws MediaError where there is no such conversion.
    ZimgGraph(const ImageKind& from, const ImageKind& to, bool dither);

    /// Planes in memory, R, G, B, A or Y, U, V, A.
    using Planes = zimg_image_buffer;
    /// Reads or writes the samples `begin` to `end`, counted in pixels, of the rows from `row` on: as many as share a
    /// row of chroma. Row y of a plane is `rowOf(planes, plane, y)`, its first sample number 0.
    using Rows = std::function<void(int row, int begin, int end, const Planes& planes)>;
    /// An image in memory, aligned to `kAlignment`, or one that goes through a buffer of a few rows.
    struct Image {
        Planes planes;
        Rows rows;  ///< empty: the image is in memory
    };
    static constexpr std::size_t kAlignment = 64;

    void run(const Image& from, const Image& to);

    static std::uint8_t* rowOf(const Planes& planes, int plane, int row) {
        return static_cast<std::uint8_t*>(planes.plane[plane].data) +
               static_cast<std::ptrdiff_t>(static_cast<unsigned>(row) & planes.plane[plane].mask) *
                   planes.plane[plane].stride;
    }

private:
    struct Free {
        void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
    };
    using Memory = std::vector<std::uint8_t, CacheLineAllocator<std::uint8_t>>;
    struct Ring {
        Memory memory;
        Planes planes;
    };
    static Ring makeRing(const ImageKind& kind, unsigned rows);

    std::unique_ptr<zimg_filter_graph, Free> m_graph;
    Memory m_scratch;
    Ring m_input;
    Ring m_output;
};

}  // namespace lumiset::media
