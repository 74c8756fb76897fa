#pragma once

#include "media/av.h"

namespace lumiset::media {

/// Converts whole frames between pixel formats and sizes, keeping the library's contexts while the geometry stays. The
/// two fields of an interlaced 4:2:0 frame are converted by themselves, since each has chroma rows of its own.
class Scaler {
public:
    explicit Scaler(int threads) : m_threads(threads) {}
    void convert(const AVFrame& from, AVFrame& to, bool interlaced);

private:
    struct Side {
        int format, width, height, matrix, fullRange, chromaX, chromaY;
        bool operator==(const Side&) const = default;
    };
    struct Context {
        Side from, to;
        AvScaler sws;
    };

    static Side sideOf(const AVFrame& frame, int field);
    void convertPart(const AVFrame& from, AVFrame& to, int field);

    int m_threads;
    Context m_contexts[3];  ///< whole frames, top fields, bottom fields
};

}  // namespace lumiset::media
