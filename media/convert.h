#pragma once

// Between the libraries' frames and pictures of straight BGRA: through zimg to planar RGB, a few rows at a time that
// stay in the processor's cache, and from there to pixels; RGB of 8 bits goes the direct way.

#include "media/plane_layout.h"
#include "media/unusual_formats.h"
#include "media/zimg_graph.h"

namespace lumiset::media {

/// Keeps a graph while the pictures stay of one kind. The two fields of an interlaced 4:2:0 frame have graphs of their
/// own, since each has chroma rows of its own.
class GraphKeeper {
public:
    ZimgGraph& graph(const ImageKind& from, const ImageKind& to, bool dither);

private:
    struct Kept {
        ImageKind from, to;
        bool dither = false;
        std::unique_ptr<ZimgGraph> graph;
    };
    Kept m_kept[3];  ///< whole frames, top fields, bottom fields
};

/// Reads frames of any pixel format and size into pictures of one size. Used from one thread at a time.
class FrameReader {
public:
    FrameReader(int width, int height, Depth depth) : m_width(width), m_height(height), m_depth(depth) {}
    /// More bits than the pictures have are dithered away.
    void read(const AVFrame& frame, Picture& picture);

private:
    void readUnusual(const AVFrame& frame, Picture& picture);
    void convert(const FrameView& view, Picture& picture);
    bool copyBytes(const FrameView& view, Picture& picture);

    int m_width;
    int m_height;
    Depth m_depth;
    GraphKeeper m_graphs;
    UnusualFormats m_unusual;
    AvFrame m_planes;
};

/// Writes pictures into frames of one format. The frames' colour tags tell how. Used from one thread at a time.
class FrameWriter {
public:
    /// `format` is the pixel format of the frames to come; colours are laid over black where it has no alpha.
    explicit FrameWriter(AVPixelFormat format);
    /// Float samples are dithered to fewer than 16 bits.
    void write(const Picture& picture, AVFrame& frame);

private:
    void convert(const Picture& picture, const FrameView& view);
    bool copyBytes(const Picture& picture, const FrameView& view);

    AVPixelFormat m_format;
    std::optional<PlaneLayout> m_layout;
    GraphKeeper m_graphs;
    UnusualFormats m_unusual;
    std::unique_ptr<FrameWriter> m_planesWriter;
    AvFrame m_planes;
};

}  // namespace lumiset::media
