#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "media/media.h"

namespace lumiset::media {

/// A sheet of pictures of one size in rows and columns, with a title above and a label under each.
class Sheet {
public:
    struct Plan {
        std::string title;
        std::string note;                 ///< in small letters below the title; may be empty
        std::vector<std::string> labels;  ///< one for each picture
        int pictureWidth = 0;             ///< of the pictures to come, in pixels
        int pictureHeight = 0;
        double pixelAspect = 1.0;
        int columns = 0;    ///< 0: as many as make a sheet of a pleasant shape
        int tileWidth = 0;  ///< pixels; 0: 320
    };
    explicit Sheet(const Plan& plan);

    [[nodiscard]] int tileWidth() const { return m_tileWidth; }

    /// Draws an 8-bit picture into its place, scaled to the tile and over a checkerboard where it is transparent.
    /// Different tiles may be placed from several threads at once.
    void place(std::size_t tile, const Picture& picture);

    [[nodiscard]] const Picture& picture() const { return m_sheet; }
    /// For `openSink`.
    [[nodiscard]] VideoFormat format() const;

private:
    [[nodiscard]] int tileLeft(std::size_t tile) const;
    [[nodiscard]] int tileTop(std::size_t tile) const;

    int m_columns;
    int m_tileWidth;
    int m_tileHeight;
    int m_gap;
    int m_labelHeight;  ///< room under a picture
    int m_headHeight;   ///< room above the first row
    Picture m_sheet;
};

}  // namespace lumiset::media
