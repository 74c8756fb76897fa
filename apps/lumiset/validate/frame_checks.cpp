#include <fmt/format.h>

#include <limits>

#include "apps/lumiset/validate/check.h"
#include "apps/lumiset/validate/host.h"
#include "hostkit/module.h"

namespace lumiset::app::validate {
namespace {

using hostkit::Module;

/// Calls `body(effect, preset, values)` for every preset of every effect; with the defaults where it has none.
template <class Body>
void forEveryPreset(const Subject& subject, const Body& body) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        for (std::uint32_t preset = 0; preset < std::max(effect.presets, 1U); ++preset) {
            body(effect, preset, effect.valuesOf(preset));
        }
    }
}

Picture drawn(const Subject& subject, std::int32_t width, std::int32_t height, const Layout& layout) {
    Picture picture(width, height, layout);
    std::mt19937 random = subject.random();
    picture.draw(random);
    return picture;
}

void expectSame(const Picture& actual, const Picture& expected, const std::string& what) {
    for (std::int32_t y = 0; y < expected.height(); ++y) {
        if (actual.row(y) != expected.row(y)) {
            throw Broken(fmt::format("{}; row {} differs.", what, y));
        }
    }
}

void checkSizes(const Subject& subject) {
    const Module module(subject.module);
    std::mt19937 random = subject.random();
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        for (std::int32_t n = 1; n <= 70; ++n) {
            const auto other = static_cast<std::int32_t>(1 + random() % 70);
            for (const auto& [width, height] : {std::pair{n, other}, {other, n}}) {
                const std::uint32_t preset = static_cast<std::uint32_t>(random()) % std::max(effect.presets, 1U);
                const std::vector<ParamValue> values = effect.valuesOf(preset);
                const std::int32_t format = kFormats[random() % std::size(kFormats)];
                std::vector<std::uint8_t> first;
                for (const bool atEnd : {true, false}) {
                    const Layout layout{.format = format, .atEnd = atEnd};
                    Picture source = drawn(subject, width, height, layout);
                    source.setReadOnly(true);
                    Picture result(width, height, layout);
                    result.fill(atEnd ? 0x00 : 0x5A);
                    renderWell(effect, values, source, result);
                    if (!result.isFinite()) {
                        throw Broken(where(effect, preset, result) + ": a sample is no finite number.");
                    }
                    if (!atEnd && result.bytes() != first) {
                        throw Broken(where(effect, preset, result) +
                                     ": what lay in the destination or beside it shows in the result.");
                    }
                    first = result.bytes();
                }
            }
        }
    }
}

void checkLayouts(const Subject& subject) {
    forEveryPreset(subject, [&](const Effect& effect, std::uint32_t preset, const std::vector<ParamValue>& values) {
        for (const std::int32_t format : kFormats) {
            const Picture source = drawn(subject, 37, 23, {.format = format});
            Picture plain(37, 23, {.format = format});
            renderWell(effect, values, source, plain);
            for (const Layout& layout :
                 {Layout{.format = format, .padding = 12},
                  Layout{.format = format, .negativeStride = true, .flipped = true},
                  Layout{.format = format, .padding = 4, .negativeStride = true, .flipped = true}}) {
                Picture laidOut(37, 23, layout);
                const std::vector<std::uint8_t> untouched = (laidOut.fill(0xC3), laidOut.bytes());
                renderWell(effect, values, drawn(subject, 37, 23, layout), laidOut);
                expectSame(laidOut, plain, where(effect, preset, laidOut) + ": padding or the stride's sign shows");
                const std::size_t rowBytes = static_cast<std::size_t>(37 * laidOut.desc().bytesPerPixel);
                const std::size_t step = rowBytes + static_cast<std::size_t>(layout.padding);
                const std::vector<std::uint8_t> bytes = laidOut.bytes();
                for (std::size_t i = 0; i < bytes.size(); ++i) {
                    if (i % step >= rowBytes && bytes[i] != 0xC3) {
                        throw Broken(where(effect, preset, laidOut) + ": it writes between the rows.");
                    }
                }
            }
            Picture turned(37, 23, {.format = format, .flipped = true});
            renderWell(effect, values, source, turned);
            expectSame(turned, plain, where(effect, preset, turned) + ": the destination's row order shows");
        }
    });
}

void checkFormats(const Subject& subject) {
    forEveryPreset(subject, [&](const Effect& effect, std::uint32_t preset, const std::vector<ParamValue>& values) {
        for (const auto& [one, other] : {std::pair{kFormatBgra8, kFormatArgb8}, {kFormatBgraFloat, kFormatArgbFloat}}) {
            Picture a(41, 26, {.format = one});
            Picture b(41, 26, {.format = other});
            renderWell(effect, values, drawn(subject, 41, 26, {.format = one}), a);
            renderWell(effect, values, drawn(subject, 41, 26, {.format = other}), b);
            expectSame(b, a, where(effect, preset, b) + fmt::format(": format {} has another picture", one));
        }
    });
}

void checkCropping(const Subject& subject) {
    forEveryPreset(subject, [&](const Effect& effect, std::uint32_t preset, const std::vector<ParamValue>& values) {
        for (const std::int32_t format : kFormats) {
            const Layout layout{.format = format};
            const Picture source = drawn(subject, 40, 24, layout);
            Picture cropped(31, 20, layout);
            cropped.take(source);
            Picture plain(31, 20, layout);
            renderWell(effect, values, cropped, plain);
            // A smaller destination, and a larger one that keeps what lies beyond.
            Picture smaller(31, 20, layout);
            renderWell(effect, values, source, smaller);
            expectSame(smaller, plain, where(effect, preset, smaller) + ": a larger source shows");
            Picture larger(50, 29, layout);
            larger.fill(0x3C);
            Picture expected(50, 29, layout);
            expected.fill(0x3C);
            expected.take(plain);
            renderWell(effect, values, cropped, larger);
            expectSame(larger, expected, where(effect, preset, larger) + ": it leaves the common rectangle");
        }
    });
}

void checkFieldsAndAspects(const Subject& subject) {
    forEveryPreset(subject, [&](const Effect& effect, std::uint32_t preset, const std::vector<ParamValue>& values) {
        const Layout layout{.format = preset % 2 == 0 ? kFormatBgra8 : kFormatBgraFloat};
        const Picture source = drawn(subject, 44, 30, layout);
        const auto rendered = [&](const FrameRenderInfo& info) {
            Picture result(44, 30, layout);
            renderWell(effect, values, source, result, info);
            return result;
        };
        const FrameRenderInfo plain = wholeFrame();
        const Picture expected = rendered(plain);
        for (std::int16_t field = 0; field <= FrameRenderInfo::kWholeFrame; ++field) {
            for (const double aspect : {0.5, 0.9091, 1.4222, 8.0}) {
                FrameRenderInfo info = plain;
                info.flags = FrameRenderInfo::kHasField | FrameRenderInfo::kHasPixelAspect;
                info.field = field;
                info.pixelAspect = aspect;
                if (!rendered(info).isFinite()) {
                    throw Broken(
                        fmt::format("{}: field {} with pixels {} wide.", where(effect, preset, source), field, aspect));
                }
            }
        }
        FrameRenderInfo info = plain;
        info.pixelAspect = 1.4222;
        expectSame(rendered(info), expected, where(effect, preset, source) + ": a shape without its flag shows");
        info = plain;
        info.flags = FrameRenderInfo::kHasPixelAspect;
        constexpr double kInfinite = std::numeric_limits<double>::infinity();
        for (const double none : {0.0, -1.0, kInfinite, std::numeric_limits<double>::quiet_NaN()}) {
            info.pixelAspect = none;
            expectSame(rendered(info), expected,
                       fmt::format("{}: pixels {} wide are not square", where(effect, preset, source), none));
        }
        Host host(effect, values);
        Picture result(44, 30, layout);
        if (!render(effect, host, source, result, nullptr)) {
            throw Broken(where(effect, preset, source) + ": it needs a render record.");
        }
        expectSame(result, expected, where(effect, preset, source) + ": without a record it is no whole frame at 0 s");
    });
}

void checkRefusals(const Subject& subject) {
    using Spoil = void (*)(VideoFrameDesc&);
    constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::pair<const char*, Spoil> kSpoils[] = {
        {"no memory", [](VideoFrameDesc& desc) { desc.data = nullptr; }},
        {"no columns", [](VideoFrameDesc& desc) { desc.width = 0; }},
        {"fewer rows than none", [](VideoFrameDesc& desc) { desc.height = -1; }},
        {"columns without end", [](VideoFrameDesc& desc) { desc.width = kMost; }},
        {"rows that overlap", [](VideoFrameDesc& desc) { desc.stride -= 4; }},
        {"the smallest stride", [](VideoFrameDesc& desc) { desc.stride = kLeast; }},
        {"an unknown format", [](VideoFrameDesc& desc) { desc.format = 2; }},
        {"a mask's format", [](VideoFrameDesc& desc) { desc.format = kFormatMask8; }},
        {"another format", [](VideoFrameDesc& desc) { desc.format = kFormatArgbFloat; }},
        {"bytes of another format", [](VideoFrameDesc& desc) { desc.bytesPerPixel = 4; }},
        {"a float at an odd address", [](VideoFrameDesc& desc) { desc.data = static_cast<char*>(desc.data) + 1; }},
    };
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        const Layout layout{.format = kFormatBgraFloat};
        const Picture source = drawn(subject, 16, 8, layout);
        Picture destination(16, 8, layout);
        destination.fill(0x3C);
        const std::vector<std::uint8_t> before = destination.bytes();
        Host host(effect, effect.valuesOf(0));
        const auto refuses = [&](const VideoFrameDesc* from, const VideoFrameDesc* to, const std::string& what) {
            const bool done = effect.object->ProcessFrame(&host, from, nullptr, to, nullptr);
            if (done || destination.bytes() != before) {
                throw Broken(fmt::format("{}: {} is {}.", effect.name, what, done ? "rendered" : "refused too late"));
            }
        };
        for (const auto& [what, spoil] : kSpoils) {
            for (const bool spoilSource : {true, false}) {
                VideoFrameDesc from = source.desc();
                VideoFrameDesc to = destination.desc();
                spoil(spoilSource ? from : to);
                refuses(&from, &to, std::string(spoilSource ? "a source with " : "a destination with ") + what);
            }
        }
        const VideoFrameDesc good = source.desc();
        const VideoFrameDesc to = destination.desc();
        refuses(nullptr, &to, "no source");
        refuses(&good, nullptr, "no destination");
        if (!effect.object->ProcessFrame(nullptr, &good, nullptr, &to, nullptr)) {
            throw Broken(effect.name + ": it needs a host to ask.");
        }
    }
}

constexpr Check kFrameChecks[] = {
    {"sizes", "Frames of 1 to 70 columns and rows are read and written to their last byte, and never beyond.",
     checkSizes},
    {"layouts", "Padding, the stride's sign and the row order change nothing in the picture, nor is padding written.",
     checkLayouts},
    {"formats", "Both orders of the channels have one picture, in 8 bits and in floats.", checkFormats},
    {"cropping", "Frames of two sizes are rendered as if both were cropped to the rectangle they share.",
     checkCropping},
    {"fields", "Every field and shape of pixel is rendered; a shape that is none is square.", checkFieldsAndAspects},
    {"refusals", "A frame that cannot be rendered is refused, and no byte of the destination has changed.",
     checkRefusals},
};

}  // namespace

std::span<const Check> frameChecks() {
    return kFrameChecks;
}

}  // namespace lumiset::app::validate
