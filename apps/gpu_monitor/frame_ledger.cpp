#include "apps/gpu_monitor/frame_ledger.h"

#include <algorithm>

namespace lumiset::monitor {
namespace {

/// Far more than a pipe holds.
constexpr std::size_t kMostEndedFirst = 256;
constexpr std::size_t kMostLeft = 256;
/// Far more than hosts have threads.
constexpr std::size_t kMostFrames = 4096;

/// 8-4-4-4-12 digits, as hosts write them.
bool isGuid(std::string_view text) {
    constexpr std::string_view kPattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    constexpr std::string_view kDigits = "0123456789abcdef";
    return std::equal(text.begin(), text.end(), kPattern.begin(), kPattern.end(), [&](char character, char place) {
        return place == 'x' ? kDigits.find(character) != std::string_view::npos : character == place;
    });
}

}  // namespace

std::optional<FrameMessage> parseFrameMessage(std::string_view text) {
    std::string_view fields[4];  // library, effect, GUID, state
    for (std::size_t field = 4; field-- > 0;) {
        const std::size_t separator = text.rfind(';');
        if (separator == std::string_view::npos) {
            return std::nullopt;
        }
        fields[field] = text.substr(separator + 1);
        text = text.substr(0, separator);
    }
    const auto [library, effect, guid, state] = fields;
    if (state == "3" && guid.empty()) {
        return FrameMessage{{}, FrameState::kHostLeaves};
    }
    if (!isGuid(guid) || (state != "1" && state != "2")) {
        return std::nullopt;
    }
    return FrameMessage{{std::string(guid), std::string(text), std::string(library), std::string(effect)},
                        state == "1" ? FrameState::kStarts : FrameState::kEnded};
}

void FrameLedger::start(const platform::CrashReport& report, const platform::Process& sender) {
    const bool left = std::find(m_left.begin(), m_left.end(), sender) != m_left.end();
    if (std::erase(m_endedFirst, report.guid) == 0 && !left && m_frames.size() < kMostFrames) {
        m_frames.insert_or_assign(report.guid, Frame{sender, report});
    }
}

void FrameLedger::end(const std::string& guid) {
    if (m_frames.erase(guid) == 0) {
        // Some never have a start: their frames began before anybody listened.
        m_endedFirst.push_back(guid);
        if (m_endedFirst.size() > kMostEndedFirst) {
            m_endedFirst.pop_front();
        }
    }
}

void FrameLedger::leave(const platform::Process& process) {
    take(process);
    m_left.push_back(process);
    if (m_left.size() > kMostLeft) {
        m_left.pop_front();
    }
}

std::vector<platform::Process> FrameLedger::processes() const {
    std::vector<platform::Process> processes;
    for (const auto& [guid, frame] : m_frames) {
        if (std::find(processes.begin(), processes.end(), frame.sender) == processes.end()) {
            processes.push_back(frame.sender);
        }
    }
    return processes;
}

std::vector<platform::CrashReport> FrameLedger::take(const platform::Process& process) {
    std::vector<platform::CrashReport> reports;
    for (auto entry = m_frames.begin(); entry != m_frames.end();) {
        if (entry->second.sender == process) {
            reports.push_back(std::move(entry->second.report));
            entry = m_frames.erase(entry);
        } else {
            ++entry;
        }
    }
    return reports;
}

}  // namespace lumiset::monitor
