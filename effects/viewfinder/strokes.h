#pragma once

// The viewfinder's artwork as geometry: strokes with round ends. The pictures are drawn from it
// (artwork/draw_artwork.cpp), and the OpenGL renderer, which has no pictures, evaluates it itself.

#include <array>
#include <cstddef>
#include <initializer_list>

namespace lumiset {

/// A line of pixels no further than `radius` from the line between two points, in pixels of its picture.
struct Stroke {
    float x0;
    float y0;
    float x1;
    float y1;
    float radius;
};

struct Point {
    float x;
    float y;
};

/// The most strokes of a shape; the shader's array has as many.
inline constexpr std::size_t kMaxStrokes = 20;

/// One glyph or mark.
struct StrokeShape {
    std::array<Stroke, kMaxStrokes> strokes{};
    std::size_t count = 0;

    /// Adds a line through these points, or a dot at a single one.
    constexpr StrokeShape& line(float radius, std::initializer_list<Point> points) {
        const Point* from = points.begin();
        for (const Point* to = points.size() > 1 ? from + 1 : from; to != points.end(); from = to++) {
            strokes[count++] = {from->x, from->y, to->x, to->y, radius};
        }
        return *this;
    }
};

namespace strokes {

// A digit's cell: its left, right, top, middle and bottom centre lines, and where corners are cut.
inline constexpr float kL = 140.0F;
inline constexpr float kR = 460.0F;
inline constexpr float kT = 150.0F;
inline constexpr float kM = 560.0F;
inline constexpr float kB = 970.0F;
inline constexpr float kCut = 100.0F;
inline constexpr float kPen = 55.0F;

constexpr StrokeShape digit(std::initializer_list<Point> points) {
    StrokeShape shape;
    shape.line(kPen, points);
    return shape;
}

}  // namespace strokes

/// The digits 0 to 9, each in a cell of 600 x 1120.
inline constexpr auto kDigitShapes = [] {
    using namespace strokes;
    std::array<StrokeShape, 10> shapes{
        digit({{kL + kCut, kT},
               {kR - kCut, kT},
               {kR, kT + kCut},
               {kR, kB - kCut},
               {kR - kCut, kB},
               {kL + kCut, kB},
               {kL, kB - kCut},
               {kL, kT + kCut},
               {kL + kCut, kT}}),
        digit({{200, 280}, {330, kT}, {330, kB}}),
        digit({{kL, kT + kCut}, {kL + kCut, kT}, {kR - kCut, kT}, {kR, kT + kCut}, {kR, 440}, {kL, kB}, {kR, kB}}),
        digit({{kL, kT + kCut},
               {kL + kCut, kT},
               {kR - kCut, kT},
               {kR, kT + kCut},
               {kR, kM - kCut},
               {kR - kCut, kM},
               {kR, kM + kCut},
               {kR, kB - kCut},
               {kR - kCut, kB},
               {kL + kCut, kB},
               {kL, kB - kCut}}),
        digit({{390, kB}, {390, kT}, {120, 710}, {490, 710}}),
        digit({{kR, kT},
               {kL, kT},
               {kL, 500},
               {kR - kCut, 500},
               {kR, 500 + kCut},
               {kR, kB - kCut},
               {kR - kCut, kB},
               {kL + kCut, kB},
               {kL, kB - kCut}}),
        digit({{kR, kT + kCut},
               {kR - kCut, kT},
               {kL + kCut, kT},
               {kL, kT + kCut},
               {kL, kB - kCut},
               {kL + kCut, kB},
               {kR - kCut, kB},
               {kR, kB - kCut},
               {kR, kM + kCut - 30},
               {kR - kCut, kM - 30},
               {kL, kM - 30}}),
        digit({{kL, kT}, {kR, kT}, {270, kB}}),
        digit({{kL + kCut, kM},
               {kL, kM - kCut},
               {kL, kT + kCut},
               {kL + kCut, kT},
               {kR - kCut, kT},
               {kR, kT + kCut},
               {kR, kM - kCut},
               {kR - kCut, kM},
               {kR, kM + kCut},
               {kR, kB - kCut},
               {kR - kCut, kB},
               {kL + kCut, kB},
               {kL, kB - kCut},
               {kL, kM + kCut},
               {kL + kCut, kM},
               {kR - kCut, kM}}),
        digit({{kL, kB - kCut},
               {kL + kCut, kB},
               {kR - kCut, kB},
               {kR, kB - kCut},
               {kR, kT + kCut},
               {kR - kCut, kT},
               {kL + kCut, kT},
               {kL, kT + kCut},
               {kL, kM - kCut + 30},
               {kL + kCut, kM + 30},
               {kR, kM + 30}})};
    shapes[3].line(kPen, {{250, kM}, {kR - kCut, kM}});
    return shapes;
}();

/// Colon, full stop, semicolon, dash and slash, each in a cell of 600 x 1120.
inline constexpr auto kSeparatorShapes = [] {
    constexpr float kDot = 70.0F;
    std::array<StrokeShape, 5> shapes{};
    shapes[0].line(kDot, {{300, 390}}).line(kDot, {{300, 740}});
    shapes[1].line(kDot, {{300, 955}});
    shapes[2].line(kDot, {{300, 390}}).line(kDot, {{300, 740}}).line(40.0F, {{330, 770}, {250, 900}});
    shapes[3].line(strokes::kPen, {{170, 560}, {430, 560}});
    shapes[4].line(strokes::kPen, {{430, 150}, {170, 970}});
    return shapes;
}();

/// The word REC, 1302 x 736.
inline constexpr auto kRecordShapes = [] {
    constexpr float kPen = 50.0F;
    std::array<StrokeShape, 1> shapes{};
    shapes[0]
        .line(kPen, {{90, 646}, {90, 90}, {270, 90}, {350, 170}, {350, 300}, {270, 380}, {90, 380}})
        .line(kPen, {{240, 380}, {350, 646}})
        .line(kPen, {{770, 90}, {530, 90}, {530, 646}, {770, 646}})
        .line(kPen, {{530, 368}, {730, 368}})
        .line(kPen,
              {{1212, 180}, {1122, 90}, {1040, 90}, {950, 180}, {950, 556}, {1040, 646}, {1122, 646}, {1212, 556}});
    return shapes;
}();

/// A battery with three of its four bars, 2156 x 874.
inline constexpr auto kBatteryShapes = [] {
    constexpr float kBar = 140.0F;
    std::array<StrokeShape, 1> shapes{};
    shapes[0]
        .line(50.0F, {{100, 100}, {1900, 100}, {1900, 774}, {100, 774}, {100, 100}})
        .line(60.0F, {{2010, 330}, {2010, 544}})
        .line(kBar, {{370, 350}, {370, 524}})
        .line(kBar, {{790, 350}, {790, 524}})
        .line(kBar, {{1210, 350}, {1210, 524}});
    return shapes;
}();

/// The record light, a disc in 512 x 512.
inline constexpr auto kLightShapes = [] {
    std::array<StrokeShape, 1> shapes{};
    shapes[0].line(240.0F, {{256, 256}});
    return shapes;
}();

/// How much of the pixel at column x and row y of a shape's picture is covered, 0..1.
float strokeCoverage(const StrokeShape& shape, float x, float y);

}  // namespace lumiset
