#pragma once

// Pictures in and out of the command line host: files of every kind that the FFmpeg libraries read and write, image
// sequences, y4m on a pipe, and the built-in moving scene.

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

struct AVCodecParameters;
struct AVFrame;

namespace lumiset::media {

/// What went wrong with a file, as one sentence for the person at the terminal.
class MediaError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A start lies behind the last picture.
class PastEnd : public MediaError {
public:
    using MediaError::MediaError;
};

struct Rational {
    int num = 0;
    int den = 1;
    double value() const { return den == 0 ? 0.0 : static_cast<double>(num) / den; }
};

enum class Depth {
    kEightBit,  ///< four bytes a pixel
    kFloat,     ///< four floats a pixel, 0..1; sources deeper than 8 bits keep their precision
};

enum class Chroma { k420, k422, k444 };  ///< k444 for RGB too

enum class ColorRange { kUnknown, kLimited, kFull };
enum class AlphaKind { kNone, kStraight, kPremultiplied };

/// How a picture's samples are coded. The numbers are those of ITU-T H.273; 2 means that the file does not say.
struct PictureColor {
    int matrix = 2;
    int primaries = 2;
    int transfer = 2;
    ColorRange range = ColorRange::kUnknown;
    int chromaPosition = -1;  ///< chroma sample location type; -1: the file does not say
    AlphaKind alpha = AlphaKind::kNone;

    bool hasAlpha() const { return alpha != AlphaKind::kNone; }
    /// Perceptual quantiser (SMPTE ST 2084) or hybrid log-gamma.
    bool isHdr() const { return transfer == 16 || transfer == 18; }
    bool operator==(const PictureColor&) const = default;
};

/// What a file tells about its pictures as a whole, mastering display and light levels for example.
struct SideData {
    int type;  ///< a packet side data type of the FFmpeg libraries
    std::vector<std::uint8_t> bytes;
};

/// What a picture file tells beside its samples.
struct StillDetails {
    std::vector<std::uint8_t> exif;  ///< a TIFF structure
    double dotsPerInch = 0;          ///< 0: the file does not say
};

struct VideoFormat {
    int width = 0;
    int height = 0;
    Rational frameRate{25, 1};  ///< nominal; the pictures' own times count
    Rational timeBase{1, 25};   ///< seconds per unit of `Picture::pts`
    Rational pixelAspect{1, 1};
    bool interlaced = false;
    bool topFieldFirst = true;
    int bitDepth = 8;                ///< bits per channel in the file
    Depth depth = Depth::kEightBit;  ///< of the pictures that are read
    std::vector<SideData> sideData;
    StillDetails details;  ///< of picture files
    Chroma chroma = Chroma::k444;
    std::string chromaName{};  ///< "4:1:1" for example; empty for RGB and grey
    PictureColor color;
    std::int64_t frameCount = 0;  ///< pictures to come, an estimate for progress; 0 when unknown
    double durationSeconds = 0;   ///< length of what will be read; 0 when unknown
    int firstNumber = 1;          ///< image sequences: number of the first picture
    bool still = false;           ///< a picture file, which can be shown at any time for any time
};

/// Allocates on cache lines, so that rows suit vector instructions.
template <class T>
struct CacheLineAllocator {
    using value_type = T;
    static constexpr std::align_val_t kAlignment{64};
    CacheLineAllocator() = default;
    template <class U>
    CacheLineAllocator(const CacheLineAllocator<U>&) noexcept {}
    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), kAlignment)); }
    void deallocate(T* data, std::size_t) noexcept { ::operator delete(data, kAlignment); }
    bool operator==(const CacheLineAllocator&) const { return true; }
};

/// One picture, top row first, samples in the order B, G, R, A, alpha straight (colours not multiplied).
struct Picture {
    int width = 0;
    int height = 0;
    Depth depth = Depth::kEightBit;
    int stride = 0;  ///< bytes from row to row, a multiple of 64
    std::vector<std::uint8_t, CacheLineAllocator<std::uint8_t>> data;

    std::int64_t pts = 0;    ///< in units of the format's `timeBase`; 0 at the file's first picture
    double timeSeconds = 0;  ///< the same in seconds; counts from the file's beginning also when reading starts later
    bool interlaced = false;
    bool topFieldFirst = true;

    int bytesPerPixel() const { return depth == Depth::kFloat ? 16 : 4; }
    std::uint8_t* row(int y) { return data.data() + static_cast<std::ptrdiff_t>(y) * stride; }
    const std::uint8_t* row(int y) const { return data.data() + static_cast<std::ptrdiff_t>(y) * stride; }
    /// Sets size and depth and makes room; keeps the memory where it is large enough. Pixels are undefined.
    void allocate(int newWidth, int newHeight, Depth newDepth);
};

/// A row's samples, `std::uint8_t` or `float` by the picture's depth.
template <class Sample>
Sample* samples(Picture& picture, int y) {
    return reinterpret_cast<Sample*>(picture.row(y));
}
template <class Sample>
const Sample* samples(const Picture& picture, int y) {
    return reinterpret_cast<const Sample*>(picture.row(y));
}

/// Tells whether every pixel has full alpha.
bool isOpaque(const Picture& picture);

/// A picture as its source has it: its times and fields in `picture`, its samples either there too or, decoded and no
/// more, in `frame`.
struct RawPicture {
    Picture picture;
    std::shared_ptr<const AVFrame> frame;
};

/// A picture as its sink's encoder takes it.
struct ReadyPicture {
    std::int64_t pts = 0;
    std::shared_ptr<AVFrame> frame;
};

struct SourceOptions {
    Depth depth = Depth::kEightBit;
    bool keepDepth = false;   ///< float pictures where the file has more than 8 bits, whatever `depth` says
    double startSeconds = 0;  ///< the first picture is the first at or after this time
    bool showing = false;     ///< or, where none is at this time, the last before it
    double durationSeconds = std::numeric_limits<double>::infinity();
    Rational frameRate{0, 1};  ///< constant; 0: the file's own, of image sequences and pictures 25 a second
    int threads = 0;           ///< threads for decoding and conversion; 0: one a core
};

/// Pictures in order of time. Used from one thread at a time, save `convert`.
class Source {
public:
    virtual ~Source() = default;
    virtual const VideoFormat& format() const = 0;
    /// Reads the next picture into `picture`, whose memory is reused; false after the last one.
    /// Throws MediaError when the file is damaged or ends too early.
    virtual bool read(Picture& picture) = 0;
    /// The same in two steps, for programs that work on several pictures at once: `fetch` gets the next picture, which
    /// `convert` makes samples of. Pictures that were fetched may be converted on any threads, at the same time and
    /// while the next ones are fetched.
    virtual bool fetch(RawPicture& raw) { return read(raw.picture); }
    virtual void convert(RawPicture& raw, Picture& picture) { std::swap(raw.picture, picture); }
    /// Starts again with the first picture at or after a time. Throws MediaError for a pipe, and past the end.
    virtual void restart(double startSeconds) = 0;

    /// Where sound and metadata come from; empty path: there are none.
    struct Origin {
        std::string path;
        double firstPictureSeconds = 0;  ///< the container's own time of `pts` 0
        double startSeconds = 0;
        double endSeconds = std::numeric_limits<double>::infinity();
        Rational frameRate{0, 1};
        /// What each of the file's tracks is, which takes time to find out.
        std::vector<std::shared_ptr<const AVCodecParameters>> tracks{};
    };
    virtual Origin origin() const { return {}; }
    /// What of the file has not become part of the pictures, a sentence each; complete after the last one.
    virtual std::vector<std::string> notes() const { return {}; }
};

struct PartOptions;

struct SinkOptions {
    /// Video codec: h264, prores, qtrle, ffv1, vp9, mpeg2; empty: the usual one for the extension.
    std::string codec;
    /// H.264, HEVC, VP8, VP9, AV1: constant rate factor, lower is better; JPEG, MPEG: 2..31; -1: high quality
    int quality = -1;
    int bits = 0;     ///< a sample, where the codec has them; 0: the source's for float pictures, 8 for others
    int threads = 0;  ///< threads for conversion and encoding; 0: one a core
    std::optional<bool> alpha{};          ///< write transparency; none: where the source or the first picture has it
    std::shared_ptr<PartOptions> part{};  ///< a part of the output is written, in a file of its own
};

/// Takes pictures in order of time. Used from one thread at a time, save `prepare`. Nothing stands under the final name
/// before `finish`; a sink destroyed without it removes what it has written.
class Sink {
public:
    virtual ~Sink() = default;
    /// Writes a picture of the size given to `openSink`, any depth. Throws MediaError.
    virtual void write(const Picture& picture) = 0;
    /// The part of writing that can be done on any threads, for several pictures at the same time. False, with nothing
    /// done, where there is none, as before the first picture: then `write` takes the picture.
    virtual bool prepare(const Picture& picture, ReadyPicture& ready);
    virtual void write(const ReadyPicture& ready);
    /// Writes what is still waiting, and gives the file its name. Throws MediaError, also when nothing was written.
    virtual void finish() = 0;
    /// What the user should know though it is no error, a sentence each; complete after the first `write`.
    virtual std::vector<std::string> notes() const { return {}; }
};

/// Opens a file, an image sequence ("shot_%04d.png", "shot_%04d.png:10-80"), "-" for standard input, or
/// "scene[:WIDTHxHEIGHT[:SECONDS[:FPS]]]" for the built-in moving scene ("scene-full" without its transparent margin,
/// "scene-cutout" its figures alone). Throws MediaError.
std::unique_ptr<Source> openSource(const std::string& input, const SourceOptions& options = {});

/// Opens a file by its extension, an image sequence ("out_%04d.png"; "out_%04d.png:10" begins at 10), or "-" for y4m on
/// standard output. `format` is the source's; set `color.alpha` where effects make transparent parts. Pictures keep
/// their times, the first one becoming time 0. Formats without alpha take the colours over black. Sound and metadata
/// are copied from `copyFrom` (may be null). Throws MediaError.
std::unique_ptr<Sink> openSink(const std::string& output, const VideoFormat& format, const SinkOptions& options = {},
                               const Source* copyFrom = nullptr);

/// The extensions that are written well, for messages and help: "png jpg ... y4m".
const std::string& outputExtensions();

}  // namespace lumiset::media
