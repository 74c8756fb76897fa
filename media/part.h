#pragma once

// A film that is rendered in parts, each by a process of its own, and put together again.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "media/media.h"

namespace lumiset::media {

/// A picture at which two parts meet.
struct Seam {
    std::int64_t pts = 0;  ///< in the source's units
    std::string picture;   ///< `hashOf` it as it was decoded
    bool operator==(const Seam&) const = default;
};

/// A film's part as every part tells of itself.
struct PartRecord {
    int number = 1;  ///< from 1
    int count = 1;
    std::string input;       ///< absolute
    std::string inputState;  ///< `identityOf` it, with its times
    double startSeconds = 0;
    double durationSeconds = std::numeric_limits<double>::infinity();
    Rational frameRate{0, 1};  ///< that was asked for; 0: the input's own
    /// Names with values that all parts of a film share. A name stands in sentences: "was made with another NAME".
    std::vector<std::pair<std::string, std::string>> traits;

    std::int64_t filmBegin = 0;  ///< `pts` of the whole film's first picture
    std::int64_t begin = 0;      ///< the part has the pictures from here
    std::int64_t end = 0;        ///< up to before this
    std::optional<Seam> first;   ///< its first picture; none: it has no picture
    std::optional<Seam> next;    ///< the first one behind it; none: the film is over

    std::int64_t firstNumber = 0;  ///< of its picture files; before the sink knows, the pictures that stand before it
    std::vector<std::uintmax_t> fileSizes;  ///< of its picture files, in order
};

/// What a sink needs to write a part. The record is complete before `Sink::finish`.
struct PartOptions {
    PartRecord record;
    std::string file;      ///< where it goes, `partFile`
    bool replace = false;  ///< pictures of a sequence that stand there
};

/// Traits that joining looks at: the input's `identityOf`, and `joinableKind` of the output.
inline constexpr const char* kInputTrait = "input";
inline constexpr const char* kKindTrait = "kind of file";
/// The kind of sequences of pictures.
inline constexpr const char* kPicturesKind = "pictures";

/// The file of a part of `output`: "film.mp4.part03of40".
[[nodiscard]] std::string partFile(const std::string& output, int number, int count);

/// The name of an input that holds in every folder.
[[nodiscard]] std::string absoluteInput(const std::string& input);

/// What kind of file parts of `output` make together, "mp4" or "pictures". Throws MediaError where parts of its kind
/// cannot be joined.
[[nodiscard]] std::string joinableKind(const std::string& output);

/// Pictures a second at which a film is cut, where the encoder for `output` may have a rate of its own.
[[nodiscard]] Rational cuttingRate(const std::string& output, const VideoFormat& format, const SinkOptions& options);

/// The place of a picture at a constant rate.
[[nodiscard]] std::int64_t slotOf(std::int64_t pts, Rational timeBase, Rational rate);

/// Where part `number` of `count` begins, in units of `format.timeBase`; `count` + 1 gives the end. Cuts lie between
/// the places that pictures have at a constant rate, so that all parts see the same ones, and a little disorder in the
/// times does no harm. `filmBegin` is the first picture's. Throws MediaError where the length is not known.
[[nodiscard]] std::int64_t partBegin(const VideoFormat& format, Rational rate, std::int64_t filmBegin, int number,
                                     int count);

/// How many pictures `source`, opened with `options`, has from one time up to before another. Of files the packets are
/// counted, which reads up to there without decoding. Throws MediaError.
[[nodiscard]] std::int64_t picturesBetween(const Source& source, const SourceOptions& options, std::int64_t begin,
                                           std::int64_t end);

/// What `part` has that `other` has not in common with it, the name of a trait or what else stands behind "another";
/// empty where they are of one film.
[[nodiscard]] std::string differenceOf(const PartRecord& part, const PartRecord& other);

/// The first of the part's picture files, of the sequence `output`, that is not there as it was written; empty: none.
[[nodiscard]] std::string lostPicture(const PartRecord& record, const std::string& output);

/// Of the libraries that decode and encode.
[[nodiscard]] std::string codecsVersion();

}  // namespace lumiset::media
