#include "media/join.h"

#include <algorithm>

#include <fmt/format.h>

#include "media/hash.h"
#include "media/video_file.h"

namespace lumiset::media {
namespace {

std::string traitOf(const PartRecord& record, const std::string& name) {
    for (const auto& [each, value] : record.traits) {
        if (each == name) {
            return value;
        }
    }
    return {};
}

}  // namespace

Join::Join(const JoinRequest& request) : m_request(request) {
    const std::string kind = joinableKind(request.output);
    putInOrder(request.parts);
    compareParts();
    const PartRecord& first = m_parts.front().record();
    if (traitOf(first, kKindTrait) != kind) {
        throw MediaError(
            fmt::format("'{}' is a part of another kind of file than '{}'.", m_parts.front().file(), request.output));
    }
    m_input = request.input.empty() ? first.input : request.input;
    for (const PartReader& part : m_parts) {
        m_pictures +=
            static_cast<std::int64_t>(kind == kPicturesKind ? part.record().fileSizes.size() : part.packets().size());
    }
    if (m_pictures == 0) {
        throw MediaError(fmt::format("There is no picture in the parts of '{}'.", request.output));
    }
    if (kind == kPicturesKind) {
        checkPictures();
    } else {
        compareInput();
    }
}

bool Join::isFile() const {
    return traitOf(m_parts.front().record(), kKindTrait) != kPicturesKind;
}

void Join::putInOrder(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
        m_parts.emplace_back(file);
    }
    std::stable_sort(m_parts.begin(), m_parts.end(),
                     [](const PartReader& a, const PartReader& b) { return a.record().number < b.record().number; });
    const int count = m_parts.empty() ? 1 : m_parts.front().record().count;
    std::string missing;
    int next = 1;
    const auto miss = [&](int until) {
        for (int missed = 0; next < until; next++, missed++) {
            missing += missed < 10    ? fmt::format("{}{}", missing.empty() ? "" : ", ", next)
                       : missed == 10 ? " ..."
                                      : "";
        }
    };
    for (const PartReader& part : m_parts) {
        const PartRecord& record = part.record();
        const std::string difference = differenceOf(record, m_parts.front().record());
        if (!difference.empty()) {
            throw MediaError(fmt::format("'{}' was made with another {} than '{}'.", part.file(), difference,
                                         m_parts.front().file()));
        }
        if (record.number < next) {
            throw MediaError(
                fmt::format("Part {} is there twice, the second time as '{}'.", record.number, part.file()));
        }
        miss(record.number);
        next = record.number + 1;
    }
    miss(count + 1);
    if (!missing.empty()) {
        throw MediaError(fmt::format("Of {} parts these are missing: {}.", count, missing));
    }
}

// Each part knows the picture behind its end as well, so that they are known to meet.
void Join::compareParts() const {
    const PartReader* before = nullptr;  // the latest with a picture
    std::int64_t number = 0;
    for (std::size_t i = 0; i < m_parts.size(); i++) {
        const PartReader& part = m_parts[i];
        const PartRecord& record = part.record();
        if (i > 0 && record.begin != m_parts[i - 1].record().end) {
            throw MediaError(fmt::format("'{}' does not begin where '{}' ends; the film has another length there.",
                                         part.file(), m_parts[i - 1].file()));
        }
        if (!record.first) {
            continue;
        }
        if (record.filmBegin != m_parts.front().record().filmBegin ||
            (before == nullptr && record.first->pts != record.filmBegin)) {
            throw MediaError(fmt::format("'{}' does not begin with the film's first picture.", part.file()));
        }
        if (before != nullptr && before->record().next != record.first) {
            throw MediaError(
                fmt::format("'{}' does not begin with the picture that follows '{}'.", part.file(), before->file()));
        }
        if (before != nullptr && (part.video() != before->video() || record.firstNumber != number)) {
            throw MediaError(fmt::format(
                "'{}' does not go on as '{}' was written: {} not the same.", part.file(), before->file(),
                part.video() != before->video() ? "the settings of its codec are" : "the numbers of its pictures are"));
        }
        before = &part;
        number = record.firstNumber + static_cast<std::int64_t>(record.fileSizes.size());
    }
    if (before != nullptr && before->record().next) {
        throw MediaError(fmt::format("The film goes on behind '{}', the last part with a picture.", before->file()));
    }
}

void Join::compareInput() const {
    if (identityOf(m_input, false) != traitOf(m_parts.front().record(), kInputTrait)) {
        throw MediaError(fmt::format("'{}' is not what the parts were made of.", m_input));
    }
}

void Join::checkPictures() const {
    for (const PartReader& part : m_parts) {
        const std::string lost = lostPicture(part.record(), m_request.output);
        if (!lost.empty()) {
            throw MediaError(fmt::format("'{}' of '{}' is not there as it was written.", lost, part.file()));
        }
    }
}

// An encoder delays pictures by as many as it moves before others, and its first times of decoding lie that far before
// the first picture. Those of a part would overlap the part before it. So the whole film's times of decoding are set
// anew: with a delay of n pictures each packet is decoded when the picture n places before it shows, which is what
// the encoder of one run writes; the first n keep the distances that it gives them.
std::vector<std::int64_t> Join::decodingTimes() const {
    std::vector<std::int64_t> shown;
    shown.reserve(static_cast<std::size_t>(m_pictures));
    std::size_t delay = 0;
    for (const PartReader& part : m_parts) {
        const std::size_t begin = shown.size();
        for (const PartPacket& packet : part.packets()) {
            shown.push_back(packet.pts);
        }
        std::sort(shown.begin() + static_cast<std::ptrdiff_t>(begin), shown.end());
        std::size_t early = 0;
        for (const PartPacket& packet : part.packets()) {
            early += packet.dts < shown[begin] ? 1U : 0U;
        }
        delay = std::max(delay, early);
    }
    delay = std::min(delay, shown.size() - 1);
    const std::int64_t lead = shown[delay] - shown[0];
    std::vector<std::int64_t> decoded;
    decoded.reserve(shown.size());
    for (std::size_t i = 0; i < shown.size(); i++) {
        decoded.push_back(i < delay ? shown[i] - lead : shown[i - delay]);
    }
    return decoded;
}

bool Join::write(const std::function<bool(std::int64_t)>& progress) {
    if (!isFile()) {
        return true;
    }
    const PartRecord& record = m_parts.front().record();
    SourceOptions options;
    options.startSeconds = record.startSeconds;
    options.durationSeconds = record.durationSeconds;
    options.frameRate = record.frameRate;
    const std::unique_ptr<Source> source = openSource(m_input, options);
    VideoFile file(m_request.output, source->format(), source.get(), m_notes);
    const std::vector<std::int64_t> decoded = decodingTimes();
    std::int64_t written = 0;
    int withPictures = 0;
    bool onlyKeys = true;
    for (const PartReader& part : m_parts) {
        for (std::size_t i = 0; i < part.packets().size(); i++) {
            if (written == 0) {
                file.begin(part.encodedVideo());
            }
            const AvPacket packet = part.read(i);
            onlyKeys = onlyKeys && (packet->flags & AV_PKT_FLAG_KEY) != 0;
            packet->dts = decoded[static_cast<std::size_t>(written)];
            file.write(*packet);
            if (!progress(++written)) {
                return false;
            }
        }
        withPictures += part.packets().empty() ? 0 : 1;
    }
    if (!onlyKeys && withPictures > 1) {
        m_notes.push_back(fmt::format("Each of the {} parts begins with a key frame.", withPictures));
    }
    file.finish();
    return true;
}

}  // namespace lumiset::media
