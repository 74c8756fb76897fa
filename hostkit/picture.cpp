#include "hostkit/picture.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "host/pixel_format.h"
#include "host/sample_conversion.h"
#include "hostkit/names.h"

namespace lumiset::hostkit {
namespace {

template <class Sample>
constexpr float kWhite = std::is_same_v<Sample, float>          ? 1.0F
                         : std::is_same_v<Sample, std::uint8_t> ? 255.0F
                                                                : 65535.0F;

template <class To, class From>
To sampleFrom(From value) {
    if constexpr (std::is_same_v<From, To>) {
        return value;
    } else if constexpr (std::is_same_v<To, float>) {
        return static_cast<float>(value) / kWhite<From>;
    } else if constexpr (std::is_same_v<From, float>) {
        // The constant stands first so that NaN becomes 0.
        const float limited = std::min(std::max(0.0F, value), 1.0F);
        // NOLINTNEXTLINE(bugprone-incorrect-roundings): not negative, and a vector instruction
        return static_cast<To>(static_cast<std::int32_t>(limited * kWhite<To> + 0.5F));
    } else if constexpr (std::is_same_v<To, std::uint16_t>) {
        return static_cast<To>(value * 257);
    } else {
        return static_cast<To>((value * 255U + 32767U) / 65535U);
    }
}

/// A colour over black: what is seen of it.
template <class Sample>
Sample overBlack(Sample color, Sample alpha) {
    if constexpr (std::is_same_v<Sample, float>) {
        return color * alpha;
    } else {
        // (product + 127) / 255 without the division, exact for every product of two bytes.
        const std::uint32_t sum = static_cast<std::uint32_t>(color) * alpha + 128U;
        return static_cast<Sample>((sum + (sum >> 8)) >> 8);
    }
}

template <class Sample>
Sample loadSample(const std::uint8_t* from) {
    Sample sample;
    std::memcpy(&sample, from, sizeof sample);
    return sample;
}

template <class Sample>
void storeSample(std::uint8_t* to, Sample sample) {
    std::memcpy(to, &sample, sizeof sample);
}

/// Where channels stand and how far it is to the next pixel, known when the program runs.
struct AnyPlaces {
    explicit AnyPlaces(const PictureView& view)
        : blue(view.channelBytes[0]),
          green(view.channelBytes[1]),
          red(view.channelBytes[2]),
          alpha(view.channelBytes[3]),
          pixel(view.pixelBytes) {}
    std::ptrdiff_t blue, green, red, alpha, pixel;
};

/// The same for the usual orders, known when it is compiled: these loops become vector instructions.
template <class Sample, int kBlue, int kGreen, int kRed, int kAlpha, int kSamples>
struct KnownPlaces {
    static constexpr std::ptrdiff_t blue = kBlue * static_cast<int>(sizeof(Sample));
    static constexpr std::ptrdiff_t green = kGreen * static_cast<int>(sizeof(Sample));
    static constexpr std::ptrdiff_t red = kRed * static_cast<int>(sizeof(Sample));
    static constexpr std::ptrdiff_t alpha = kAlpha * static_cast<int>(sizeof(Sample));
    static constexpr std::ptrdiff_t pixel = kSamples * static_cast<int>(sizeof(Sample));

    static bool are(const PictureView& view) {
        return view.pixelBytes == pixel && view.channelBytes[0] == blue && view.channelBytes[1] == green &&
               view.channelBytes[2] == red && (!view.hasAlpha || view.channelBytes[3] == alpha);
    }
};

std::uint32_t withRedAndBlueSwapped(std::uint32_t pixel) {
    return (pixel & 0xFF00FF00U) | (pixel >> 16 & 0xFFU) | (pixel & 0xFFU) << 16;
}

/// Bytes of R, G, B, A to B, G, R, A and back: whole pixels at once, which the compiler makes vector instructions of.
void swapRedAndBlue(const std::uint8_t* __restrict from, std::uint8_t* __restrict to, std::int32_t width) {
    for (std::int32_t x = 0; x < width; ++x, from += 4, to += 4) {
        storeSample(to, withRedAndBlueSwapped(loadSample<std::uint32_t>(from)));
    }
}

/// Three bytes to four of an opaque pixel, `width` of them, each read with the byte behind it.
template <bool kSwap>
void addAlpha(const std::uint8_t* __restrict from, std::uint8_t* __restrict to, std::int32_t width) {
    for (std::int32_t x = 0; x < width; ++x, from += 3, to += 4) {
        const auto pixel = loadSample<std::uint32_t>(from);
        storeSample(to, (kSwap ? withRedAndBlueSwapped(pixel) : pixel) | 0xFF000000U);
    }
}

/// Four bytes to three, `width` of them, each written with a byte behind it. False, and nothing is written, where a
/// pixel is not opaque.
template <bool kSwap>
bool dropAlpha(const std::uint8_t* __restrict from, std::uint8_t* __restrict to, std::int32_t width) {
    std::uint32_t all = 0xFF000000U;
    for (std::int32_t x = 0; x < width; ++x) {
        all &= loadSample<std::uint32_t>(from + 4 * std::ptrdiff_t{x});
    }
    if (all != 0xFF000000U) {
        return false;
    }
    for (std::int32_t x = 0; x < width; ++x, from += 4, to += 3) {
        const auto pixel = loadSample<std::uint32_t>(from);
        storeSample(to, kSwap ? withRedAndBlueSwapped(pixel) : pixel);
    }
    return true;
}

/// Bytes in the usual orders have loops of their own.
template <class From, class To, class Places>
constexpr bool kAreKnownBytes =
    std::is_same_v<From, std::uint8_t>&& std::is_same_v<To, std::uint8_t> && !std::is_same_v<Places, AnyPlaces>;

/// Frames here are B, G, R, A.
template <class From, class To, bool kHasAlpha, class Places>
void importRow(const std::uint8_t* __restrict from, const Places places, std::uint8_t* __restrict frame,
               std::int32_t width) {
    if constexpr (kAreKnownBytes<From, To, Places>) {
        if constexpr (kHasAlpha) {
            return swapRedAndBlue(from, frame, width);
        }
        addAlpha<Places::red == 0>(from, frame, width - 1);
        from += 3 * (width - 1);
        frame += 4 * (width - 1);
        width = 1;  // behind the last pixel there may be nothing to read
    }
    constexpr To kOpaque = static_cast<To>(kWhite<To>);
    auto* __restrict to = reinterpret_cast<To*>(frame);
    for (std::int32_t x = 0; x < width; ++x, from += places.pixel, to += 4) {
        to[0] = sampleFrom<To>(loadSample<From>(from + places.blue));
        to[1] = sampleFrom<To>(loadSample<From>(from + places.green));
        to[2] = sampleFrom<To>(loadSample<From>(from + places.red));
        to[3] = kOpaque;
        if constexpr (kHasAlpha) {
            to[3] = sampleFrom<To>(loadSample<From>(from + places.alpha));
        }
    }
}

template <class From, class To, bool kHasAlpha, class Places>
void exportRow(const std::uint8_t* __restrict frame, std::uint8_t* __restrict to, const Places places,
               std::int32_t width) {
    if constexpr (kAreKnownBytes<From, To, Places>) {
        if constexpr (kHasAlpha) {
            return swapRedAndBlue(frame, to, width);
        }
        if (dropAlpha<Places::red == 0>(frame, to, width - 1)) {
            frame += 4 * (width - 1);
            to += 3 * (width - 1);
            width = 1;  // behind the last pixel there may be something else
        }
    }
    const auto* __restrict from = reinterpret_cast<const From*>(frame);
    for (std::int32_t x = 0; x < width; ++x, from += 4, to += places.pixel) {
        if constexpr (kHasAlpha) {
            storeSample(to + places.blue, sampleFrom<To>(from[0]));
            storeSample(to + places.green, sampleFrom<To>(from[1]));
            storeSample(to + places.red, sampleFrom<To>(from[2]));
            storeSample(to + places.alpha, sampleFrom<To>(from[3]));
        } else {
            storeSample(to + places.blue, sampleFrom<To>(overBlack(from[0], from[3])));
            storeSample(to + places.green, sampleFrom<To>(overBlack(from[1], from[3])));
            storeSample(to + places.red, sampleFrom<To>(overBlack(from[2], from[3])));
        }
    }
}

template <class Sample, class Visit>
void withPlaces(const PictureView& view, const Visit& visit) {
    using Rgba = KnownPlaces<Sample, 2, 1, 0, 3, 4>;
    using Rgb = KnownPlaces<Sample, 2, 1, 0, 0, 3>;
    using Bgr = KnownPlaces<Sample, 0, 1, 2, 0, 3>;
    if (view.hasAlpha) {
        return Rgba::are(view) ? visit(Rgba(), std::true_type()) : visit(AnyPlaces(view), std::true_type());
    }
    return Rgb::are(view)   ? visit(Rgb(), std::false_type())
           : Bgr::are(view) ? visit(Bgr(), std::false_type())
                            : visit(AnyPlaces(view), std::false_type());
}

template <class Visit>
void withSamples(const PictureView& view, const Visit& visit) {
    switch (view.samples) {
        case SampleType::kUint8:  // NOLINT(bugprone-branch-clone): the branches differ in their types
            return visit(std::uint8_t());
        case SampleType::kUint16:
            return visit(std::uint16_t());
        case SampleType::kFloat:
            break;
    }
    visit(float());
}

/// Calls `row(y)` for every row, on `threads` where they help.
template <class Row>
void forEachRow(std::int32_t height, IHostParallel* threads, const Row& row) {
    constexpr std::int32_t kBand = 32;
    struct Work {
        const Row& row;
        std::int32_t height;
    } work{row, height};
    const ParallelTask task = [](void* context, std::uint32_t band) {
        const auto& whole = *static_cast<const Work*>(context);
        const auto first = static_cast<std::int32_t>(band) * kBand;
        for (std::int32_t y = first; y < std::min(first + kBand, whole.height); ++y) {
            whole.row(y);
        }
    };
    const auto bands = static_cast<std::uint32_t>((height + kBand - 1) / kBand);
    if (threads == nullptr || bands < 2 || !threads->Run(task, &work, bands)) {
        for (std::uint32_t band = 0; band < bands; ++band) {
            task(&work, band);
        }
    }
}

std::uint8_t* rowAt(const PictureView& view, std::int32_t y) {
    return static_cast<std::uint8_t*>(view.data) + view.rowBytes * y;
}

template <class From, class To>
void importRows(const PictureView& view, const VideoFrameDesc& frame, IHostParallel* threads) {
    withPlaces<From>(view, [&](const auto& places, auto hasAlpha) {
        forEachRow(view.height, threads, [&](std::int32_t y) {
            importRow<From, To, decltype(hasAlpha)::value>(rowAt(view, y), places, rowOf(frame, y), view.width);
        });
    });
}

template <class From, class To>
void exportRows(const VideoFrameDesc& frame, const PictureView& view, IHostParallel* threads) {
    withPlaces<To>(view, [&](const auto& places, auto hasAlpha) {
        forEachRow(view.height, threads, [&](std::int32_t y) {
            exportRow<From, To, decltype(hasAlpha)::value>(rowOf(frame, y), rowAt(view, y), places, view.width);
        });
    });
}

void importPicture(const PictureView& view, const VideoFrameDesc& frame, IHostParallel* threads) {
    withSamples(view, [&](auto sample) {
        using From = decltype(sample);
        if (isFloatFormat(frame.format)) {
            importRows<From, float>(view, frame, threads);
        } else {
            importRows<From, std::uint8_t>(view, frame, threads);
        }
    });
}

void exportPicture(const VideoFrameDesc& frame, const PictureView& view, IHostParallel* threads) {
    withSamples(view, [&](auto sample) {
        using To = decltype(sample);
        if (isFloatFormat(frame.format)) {
            exportRows<float, To>(frame, view, threads);
        } else {
            exportRows<std::uint8_t, To>(frame, view, threads);
        }
    });
}

struct Extent {
    std::uintptr_t begin;
    std::uintptr_t end;
};

/// The bytes from a picture's first sample to its last.
Extent extentOf(const PictureView& view) {
    const auto base = reinterpret_cast<std::uintptr_t>(view.data);
    std::ptrdiff_t low = 0;
    std::ptrdiff_t high = 0;
    for (int channel = 0; channel < (view.hasAlpha ? 4 : 3); ++channel) {
        low = std::min(low, view.channelBytes[static_cast<std::size_t>(channel)]);
        high = std::max(high, view.channelBytes[static_cast<std::size_t>(channel)]);
    }
    for (const std::ptrdiff_t step : {view.rowBytes * (view.height - 1), view.pixelBytes * (view.width - 1)}) {
        (step < 0 ? low : high) += step;
    }
    return {base + static_cast<std::uintptr_t>(low),
            base + static_cast<std::uintptr_t>(high) + sampleBytes(view.samples)};
}

bool overlap(const PictureView& a, const PictureView& b) {
    const Extent first = extentOf(a);
    const Extent second = extentOf(b);
    return first.begin < second.end && second.begin < first.end;
}

}  // namespace

std::size_t sampleBytes(SampleType type) {
    return type == SampleType::kUint8 ? 1 : type == SampleType::kUint16 ? 2 : 4;
}

std::optional<VideoFrameDesc> PictureView::frame() const {
    const auto bytes = static_cast<std::ptrdiff_t>(sampleBytes(samples));
    const bool isBgra = channelBytes == std::array<std::ptrdiff_t, 4>{0, bytes, 2 * bytes, 3 * bytes};
    const bool isArgb = channelBytes == std::array<std::ptrdiff_t, 4>{3 * bytes, 2 * bytes, bytes, 0};
    const bool isFloat = samples == SampleType::kFloat;
    const std::ptrdiff_t distance = rowBytes < 0 ? -rowBytes : rowBytes;
    const bool aligned = !isFloat || (reinterpret_cast<std::uintptr_t>(data) % 4 == 0 && rowBytes % 4 == 0);
    if (!hasAlpha || samples == SampleType::kUint16 || pixelBytes != 4 * bytes || !(isBgra || isArgb) || !aligned ||
        distance < pixelBytes * width || distance > INT32_MAX) {
        return std::nullopt;
    }
    const PixelFormat format =
        isFloat ? (isBgra ? kFormatBgraFloat : kFormatArgbFloat) : (isBgra ? kFormatBgra8 : kFormatArgb8);
    return VideoFrameDesc{data,
                          width,
                          height,
                          static_cast<std::int32_t>(rowBytes),
                          formatBytesPerPixel(format),
                          {},
                          static_cast<std::uint32_t>(format),
                          0};
}

std::array<int, 4> channelPlaces(std::string_view order) {
    for (const std::string_view known : {"RGBA", "BGRA", "ARGB", "ABGR", "RGB", "BGR"}) {
        if (equalIgnoringCase(order, known)) {
            std::array<int, 4> places{-1, -1, -1, -1};
            for (std::size_t i = 0; i < 4; ++i) {
                const std::size_t place = known.find("BGRA"[i]);
                places[i] = place != std::string_view::npos ? static_cast<int>(place) : -1;
            }
            return places;
        }
    }
    throw std::invalid_argument("A picture's order is RGBA, BGRA, ARGB, ABGR, RGB or BGR, not \"" + std::string(order) +
                                "\".");
}

PictureView interleavedPicture(void* data, std::int32_t width, std::int32_t height, SampleType samples,
                               std::string_view order, std::ptrdiff_t rowBytes) {
    const std::array<int, 4> places = channelPlaces(order);
    if (data == nullptr || width < 1 || height < 1) {
        throw std::invalid_argument("A picture has memory, a width and a height from 1 on.");
    }
    const auto bytes = static_cast<std::ptrdiff_t>(sampleBytes(samples));
    PictureView view{data, width, height, samples, rowBytes, bytes * static_cast<std::ptrdiff_t>(order.size())};
    const std::ptrdiff_t used = view.pixelBytes * width;
    if (rowBytes == 0) {
        view.rowBytes = used;
    } else if (rowBytes < used && rowBytes > -used) {
        throw std::invalid_argument("The rows of a picture of " + std::to_string(width) + " pixels have at least " +
                                    std::to_string(used) + " bytes, not " + std::to_string(rowBytes) + '.');
    }
    for (std::size_t i = 0; i < 4; ++i) {
        view.channelBytes[i] = bytes * std::max(places[i], 0);
    }
    view.hasAlpha = places[3] >= 0;
    return view;
}

struct PictureRenderer::Inside {
    const std::vector<EffectStage>& chain;
    ComPtr<IHostAllocator> allocator;
    ComPtr<IHostParallel> threads;
    std::map<PixelFormat, Renderer> renderers{};
    FrameBuffer source{};
    FrameBuffer destination{};

    /// `buffer` with room for that picture.
    static const VideoFrameDesc& roomIn(FrameBuffer& buffer, const PictureView& like, PixelFormat format) {
        if (!buffer.fits(like.width, like.height, format)) {
            buffer = FrameBuffer();  // Frees the old one before the new one is taken.
            buffer = FrameBuffer(like.width, like.height, format);
        }
        return buffer.desc();
    }
};

PictureRenderer::PictureRenderer(const std::vector<EffectStage>& chain, IHostAllocator* allocator,
                                 IHostParallel* threads)
    : m_inside(std::make_unique<Inside>(
          Inside{chain, ComPtr<IHostAllocator>::held(allocator), ComPtr<IHostParallel>::held(threads)})) {}

PictureRenderer::~PictureRenderer() = default;

void PictureRenderer::render(const PictureView& source, const PictureView& destination, const FrameContext& context) {
    if (source.data == nullptr || destination.data == nullptr || source.width < 1 || source.height < 1) {
        throw std::invalid_argument("A picture has memory, a width and a height from 1 on.");
    }
    if (source.width != destination.width || source.height != destination.height) {
        throw std::invalid_argument("The pictures are of one size, not " + std::to_string(source.width) + " x " +
                                    std::to_string(source.height) + " and " + std::to_string(destination.width) +
                                    " x " + std::to_string(destination.height) + '.');
    }
    Inside& self = *m_inside;
    const bool inBytes = source.samples == SampleType::kUint8 && destination.samples == SampleType::kUint8;
    const PixelFormat usual = inBytes ? kFormatBgra8 : kFormatBgraFloat;
    const std::optional<VideoFrameDesc> target = destination.frame();
    std::optional<VideoFrameDesc> from = source.frame();
    // What is written must not be read any more; what is converted on the way out is written at the end.
    if (!from || (target && overlap(source, destination))) {
        from = Inside::roomIn(self.source, source, usual);
        importPicture(source, *from, self.threads.get());
    }
    const VideoFrameDesc to = target ? *target : Inside::roomIn(self.destination, destination, usual);
    const PixelFormat format = isFloatFormat(from->format) != inBytes ? static_cast<PixelFormat>(from->format) : usual;
    Renderer& renderer =
        self.renderers.try_emplace(format, self.chain, format, self.allocator.get(), self.threads.get()).first->second;
    renderer.render(*from, to, context);
    if (!target) {
        exportPicture(to, destination, self.threads.get());
    }
}

}  // namespace lumiset::hostkit
