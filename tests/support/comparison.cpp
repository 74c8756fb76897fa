#include "tests/support/comparison.h"

#include <stb_image_write.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <vector>

namespace lumiset::test {

namespace {

std::uint8_t level(double value) {
    return static_cast<std::uint8_t>(std::lround(std::min(std::max(0.0, value), 255.0)));
}

/// RGB pixels of several pictures beside each other.
class Sheet {
public:
    Sheet(std::int32_t columns, std::int32_t rows, std::int32_t width, std::int32_t height)
        : m_width((width + kGap) * columns), m_cellWidth(width + kGap), m_cellHeight(height + kGap) {
        m_pixels.assign(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_cellHeight * rows) * 3, 64);
    }
    void set(std::int32_t column, std::int32_t row, std::int32_t x, std::int32_t y, double r, double g, double b) {
        const std::int32_t line = row * m_cellHeight + y;
        const std::size_t at = (static_cast<std::size_t>(line) * static_cast<std::size_t>(m_width) +
                                static_cast<std::size_t>(column * m_cellWidth + x)) *
                               3;
        m_pixels[at] = level(r);
        m_pixels[at + 1] = level(g);
        m_pixels[at + 2] = level(b);
    }
    void write(const std::string& path, std::int32_t rows) const {
        stbi_write_png(path.c_str(), m_width, m_cellHeight * rows, 3, m_pixels.data(), m_width * 3);
    }

private:
    static constexpr std::int32_t kGap = 4;
    std::int32_t m_width;
    std::int32_t m_cellWidth;
    std::int32_t m_cellHeight;
    std::vector<std::uint8_t> m_pixels;
};

}  // namespace

std::string writeComparison(const Picture& a, const Picture& b, const std::string& name) {
    Sheet sheet(3, 2, a.width(), a.height());
    for (std::int32_t y = 0; y < a.height(); ++y) {
        for (std::int32_t x = 0; x < a.width(); ++x) {
            const double ground = (x / 8 + y / 8) % 2 == 0 ? 160.0 : 96.0;
            std::int32_t column = 0;
            for (const Picture* picture : {&a, &b}) {
                const double alpha = picture->get(x, y, kAlpha);
                const auto over = [&](Channel channel) {
                    return ground + (picture->get(x, y, channel) - ground) * alpha / 255.0;
                };
                sheet.set(column, 0, x, y, over(kRed), over(kGreen), over(kBlue));
                sheet.set(column, 1, x, y, alpha, alpha, alpha);
                ++column;
            }
            const auto apart = [&](Channel channel) {
                return 8.0 * std::abs(a.get(x, y, channel) - b.get(x, y, channel));
            };
            sheet.set(2, 0, x, y, apart(kRed), apart(kGreen), apart(kBlue));
            sheet.set(2, 1, x, y, apart(kAlpha), apart(kAlpha), apart(kAlpha));
        }
    }
    std::string file;
    for (const char letter : name) {
        file += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter : '_';
    }
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "lumiset_differences";
    std::filesystem::create_directories(folder);
    const std::string path = (folder / (file + ".png")).string();
    sheet.write(path, 2);
    return path;
}

}  // namespace lumiset::test
