#pragma once

// Between the libraries' frames and pictures of straight BGRA, exactly where both are RGB, by the stream's own matrix
// and range where it is YUV.

#include "media/av.h"

namespace lumiset::media {

/// The matrix of a YUV stream: the tagged one, else BT.601 for standard definition and BT.709 above.
AVColorSpace yuvMatrix(AVColorSpace tagged, int width, int height);

/// Reads frames of any pixel format and size into pictures of one size. Keeps its scalers from frame to frame.
class FrameReader {
public:
    FrameReader(int width, int height, Depth depth, int threads);
    ~FrameReader();
    void read(const AVFrame& frame, Picture& picture);

private:
    struct Scalers;
    void readByScaler(const AVFrame& frame, Picture& picture);

    int m_width;
    int m_height;
    Depth m_depth;
    std::unique_ptr<Scalers> m_scalers;
    AvFrame m_planes;
    std::vector<std::uint16_t> m_line;
};

/// Writes pictures into frames of one format. The frames' colour tags tell matrix and range.
class FrameWriter {
public:
    /// `format` is the pixel format of the frames to come; alpha is blended over black where it has none.
    FrameWriter(AVPixelFormat format, int threads);
    ~FrameWriter();
    void write(const Picture& picture, AVFrame& frame);

private:
    struct Scalers;
    void writeLines(const Picture& picture, AVFrame& frame);

    AVPixelFormat m_format;
    std::unique_ptr<Scalers> m_scalers;
    AvFrame m_planes;
    Picture m_opaque;
};

/// Turns a picture by a display matrix (the libraries' nine words), in steps of 90 degrees, mirrored or not.
/// `isTurned` tells whether width and height change places.
bool isUpright(const std::int32_t* displayMatrix);
bool isTurned(const std::int32_t* displayMatrix);
void turnUpright(const Picture& from, const std::int32_t* displayMatrix, Picture& to);

}  // namespace lumiset::media
