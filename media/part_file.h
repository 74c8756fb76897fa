#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/part.h"
#include "media/pending_file.h"
#include "media/video_target.h"

namespace lumiset::media {

/// A part's file: encoded pictures as the encoder gave them, one after the other, and behind them what they are. All of
/// it is covered by hashes. It is no file of any player's, so nothing of the encoder's is lost or rounded in it.
class PartWriter final : public VideoTarget {
public:
    /// `options` outlives this; its record is written by `finish`.
    explicit PartWriter(const PartOptions& options);
    void begin(const EncodedVideo& video) override;
    void write(AVPacket& packet) override;
    void finish() override;

private:
    void add(const void* bytes, std::size_t count);

    const PartOptions& m_options;
    PendingFile m_file;
    std::string m_video;    ///< JSON
    std::string m_packets;  ///< JSON, all but the last bracket
    std::string m_buffer;
};

/// A packet of a part.
struct PartPacket {
    std::int64_t pts = 0;
    std::int64_t dts = 0;
    std::int64_t duration = 0;
    int flags = 0;
    std::uint64_t offset = 0;  ///< in the file
    std::size_t size = 0;
    std::vector<std::pair<int, std::size_t>> sideData;  ///< type and size of what stands behind its bytes
    std::string hash;
};

/// Reads a part's file. Anybody may have written it. All throw MediaError, which names the file.
class PartReader {
public:
    explicit PartReader(const std::string& file);

    [[nodiscard]] const std::string& file() const { return m_file; }
    [[nodiscard]] const PartRecord& record() const { return m_record; }
    [[nodiscard]] const std::vector<PartPacket>& packets() const { return m_packets; }
    /// What it has pictures of; the same for two parts whose pictures follow each other in one stream.
    [[nodiscard]] const std::string& video() const { return m_video; }
    [[nodiscard]] EncodedVideo encodedVideo() const;
    /// The packet at that place, compared with its hash.
    [[nodiscard]] AvPacket read(std::size_t place) const;

private:
    [[noreturn]] void fail(const char* why) const;
    void parse(const std::string& text);
    AvPacket asPicture(const std::string& bytes) const;

    std::string m_file;
    PartRecord m_record;
    std::vector<PartPacket> m_packets;
    std::string m_video;
    std::unique_ptr<AVCodecParameters, FreeByAddress<avcodec_parameters_free>> m_codec;
    AVRational m_timeBase{1, 25};
    Rational m_frameRate{25, 1};
};

/// What stands where a part is to be written.
enum class PartState {
    kAbsent,
    kBegun,    ///< a part that was begun or is damaged
    kWhole,    ///< a part, all of it as it was written
    kForeign,  ///< something else
};
[[nodiscard]] PartState partStateOf(const std::string& file);

/// Leaves a part's file that tells that it was begun, for what is written beside it.
void markPartBegun(const std::string& file);

}  // namespace lumiset::media
