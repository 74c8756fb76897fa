// Whatever bytes somebody writes into the monitor's pipe: they are read as messages or left alone, what is read is what
// was written, and the frames that are kept stay few.

#include <cstdint>
#include <string>
#include <string_view>

#include "apps/gpu_monitor/frame_ledger.h"
#include "platform/posix/monitor_message.h"
#include "tests/fuzz/memory_file.h"

namespace lumiset {
namespace {

using fuzz::require;
using monitor::FrameState;

constexpr std::uint64_t kNamespace = 7;

/// Names without separators come back as the fields that they were; a host's may hold some.
void checkFields(const std::string& text, const monitor::FrameMessage& frame) {
    const platform::CrashReport& report = frame.report;
    const char state = frame.state == FrameState::kStarts ? '1' : frame.state == FrameState::kEnded ? '2' : '3';
    const std::string written = report.host + ';' + report.effectLibrary + ';' + report.effect + ';' + report.guid;
    require(frame.state == FrameState::kHostLeaves ? text.ends_with(";;3") : text == written + ';' + state);
    require(report.effect.find(';') == std::string::npos && report.effectLibrary.find(';') == std::string::npos);
}

}  // namespace
}  // namespace lumiset

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumiset;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    monitor::FrameLedger ledger;
    while (!bytes.empty()) {
        const std::string_view one = bytes.substr(0, bytes.find('\0'));
        bytes.remove_prefix(std::min(one.size() + 1, bytes.size()));
        const auto message = platform::messageIn(one, kNamespace);
        if (!message) {
            continue;
        }
        require(one.ends_with(message->text));
        const auto frame = monitor::parseFrameMessage(message->text);
        if (!frame) {
            continue;
        }
        checkFields(message->text, *frame);
        const std::size_t before = ledger.processes().size();
        switch (frame->state) {
            case FrameState::kStarts:
                ledger.start(frame->report, message->sender);
                require(ledger.processes().size() <= before + 1);
                break;
            case FrameState::kEnded:
                ledger.end(frame->report.guid);
                require(ledger.processes().size() <= before);
                break;
            case FrameState::kHostLeaves:
                ledger.leave(message->sender);
                require(ledger.take(message->sender).empty());
                break;
        }
    }
    for (const platform::Process& process : ledger.processes()) {
        require(!ledger.take(process).empty());
    }
    require(ledger.empty());
    return 0;
}
