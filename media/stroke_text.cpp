#include "media/stroke_text.h"

#include <algorithm>
#include <limits>

namespace lumiset::media {
namespace {

// Letters as strokes on a grid of 4 columns and 6 rows, with 2 more below the line: points as "xy" digits, strokes
// parted by blanks. Corners are rounded by the pen.
struct Glyph {
    char letter;
    const char* strokes;
};
constexpr Glyph kGlyphs[] = {
    {'A', "0620 2046 1434"},
    {'B', "06003041423303 3344453606"},
    {'C', "4130100105163645"},
    {'D', "00063645413000"},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "41301001051636454323"},
    {'H', "0006 4046 0343"},
    {'I', "2026"},
    {'J', "3035261605"},
    {'K', "0006 4003 1246"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "103041453616050110"},
    {'P', "060030414233 0333"},
    {'Q', "103041453616050110 3446"},
    {'R', "060030414233 0333 2346"},
    {'S', "4130100102133344453616 1605"},
    {'T', "0040 2026"},
    {'U', "0005163645 4540"},
    {'V', "002640"},
    {'W', "0016234640"},
    {'X', "0046 4006"},
    {'Y', "0023 4023 2326"},
    {'Z', "00400646"},
    {'a', "3322120305162635 3236"},
    {'b', "0006 0312223335261605"},
    {'c', "3322120305162635"},
    {'d', "3036 3322120305162635"},
    {'e', "04343322120305162635"},
    {'f', "30201116 0232"},
    {'g', "3322120305162635 3237281807"},
    {'h', "0006 0312223336"},
    {'i', "0206 0000"},
    {'j', "12172807 1010"},
    {'k', "0006 3205 1436"},
    {'l', "0006"},
    {'m', "0206 03122326 23324346"},
    {'n', "0206 0312223336"},
    {'o', "122233352616050312"},
    {'p', "0208 0312223335261605"},
    {'q', "3238 3322120305162635"},
    {'r', "0206 031222"},
    {'s', "33221203142435261605"},
    {'t', "10152636 0232"},
    {'u', "0205162635 3236"},
    {'v', "022642"},
    {'w', "0216233642"},
    {'x', "0236 3206"},
    {'y', "0205162635 3237281807"},
    {'z', "02320636"},
    {'0', "103041453616050110"},
    {'1', "112026 1636"},
    {'2', "011030414206 0646"},
    {'3', "004023 23334445361605"},
    {'4', "3600 3630 0444"},
    {'5', "4000033344453606"},
    {'6', "301002051636454433 3303"},
    {'7', "004016"},
    {'8', "103041423313020110 133344453616050413"},
    {'9', "43130201103041453616"},
    {'.', "0606"},
    {':', "0202 0505"},
    {',', "0607"},
    {'\'', "0001"},
    {'"', "0001 1011"},
    {'-', "0434"},
    {'+', "0444 2226"},
    {'=', "0333 0535"},
    {'/', "0630"},
    {'(', "10010516"},
    {')', "00111506"},
    {'%', "0640 0101 4545"},
    {'#', "1016 3036 0242 0444"},
    {'!', "0004 0606"},
};
constexpr const char* kUnknown = "0040460600";
constexpr float kRows = 6;
constexpr float kGap = 2.1F;      // between letters
constexpr float kSlender = 0.6F;  // width of a letter of one upright stroke
constexpr float kSpace = 2.6F;

struct Shape {
    const char* strokes = "";
    float left = 0;
    float width = kSpace;
};

// Capitals and digits stand in cells of one width, so that numbers do not jump as they count.
Shape shapeOf(char letter) {
    if (letter == ' ') {
        return {};
    }
    Shape shape = {kUnknown, 0, 4};
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.letter == letter) {
            shape.strokes = glyph.strokes;
        }
    }
    const bool cell = (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z' && letter != 'I');
    if (cell) {
        return shape;
    }
    float right = 0;
    shape.left = 9;
    for (const char* c = shape.strokes; *c != '\0'; c++) {
        if (*c != ' ') {
            shape.left = std::min(shape.left, static_cast<float>(*c - '0'));
            right = std::max(right, static_cast<float>(*c - '0'));
            c++;
        }
    }
    shape.width = right - shape.left;
    if (shape.width <= 0) {
        shape.left -= kSlender / 2;
        shape.width = kSlender;
    }
    return shape;
}

// A character of several bytes is one box.
bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

float TextLetter::distanceTo(Vec p) const {
    float nearest = std::numeric_limits<float>::max();
    for (const Stroke& stroke : strokes) {
        nearest = std::min(nearest, segment(p, stroke.from, stroke.to, 0));
    }
    return nearest;
}

std::vector<TextLetter> layOutText(std::string_view text, Vec origin, float height) {
    const float grid = height / kRows;
    std::vector<TextLetter> letters;
    for (const char character : text) {
        if (continuesCharacter(character)) {
            continue;
        }
        const Shape shape = shapeOf(character);
        TextLetter letter;
        letter.box = {origin.x, origin.y, origin.x + shape.width * grid, origin.y};
        bool down = false;
        Vec last;
        for (const char* c = shape.strokes; *c != '\0';) {
            if (*c == ' ') {
                down = false;
                c++;
                continue;
            }
            const Vec point = origin + Vec{(static_cast<float>(c[0] - '0') - shape.left) * grid,
                                           static_cast<float>(c[1] - '0') * grid};
            letter.box.bottom = std::max(letter.box.bottom, point.y);
            if (down) {
                letter.strokes.push_back({last, point});
            }
            last = point;
            down = true;
            c += 2;
        }
        if (!letter.strokes.empty()) {
            letters.push_back(std::move(letter));
        }
        origin.x += (shape.width + kGap) * grid;
    }
    return letters;
}

float textWidth(std::string_view text, float height) {
    float columns = -kGap;
    for (const char character : text) {
        columns += continuesCharacter(character) ? 0 : shapeOf(character).width + kGap;
    }
    return std::max(0.0F, columns * height / kRows);
}

}  // namespace lumiset::media
