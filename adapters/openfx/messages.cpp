#include "adapters/openfx/messages.h"

#include "adapters/openfx/abi/names.h"
#include "hostkit/report.h"

namespace lumiset::openfx {
namespace {

constexpr const char* kId = "lumiset";

}  // namespace

void complain(const HostInfo& host, EffectHandle effect, const std::string& sentence) noexcept {
    hostkit::report(sentence);
    if (host.message != nullptr && host.message->message != nullptr) {
        host.message->message(effect, value::kMessageError, kId, "%s", sentence.c_str());
    }
}

void complainOfFrame(const HostInfo& host, EffectHandle effect, const std::string& sentence) noexcept {
    if (host.persistentMessages) {
        hostkit::report(sentence);
        host.message->setPersistentMessage(effect, value::kMessageError, kId, "%s", sentence.c_str());
    } else if (hostkit::report(sentence) && host.message != nullptr && host.message->message != nullptr) {
        host.message->message(effect, value::kMessageError, kId, "%s", sentence.c_str());
    }
}

void clearComplaint(const HostInfo& host, EffectHandle effect) noexcept {
    if (host.persistentMessages) {
        host.message->clearPersistentMessage(effect);
    }
}

bool agrees(const HostInfo& host, EffectHandle effect, const std::string& question) {
    return host.message != nullptr && host.message->message != nullptr &&
           host.message->message(effect, value::kMessageQuestion, kId, "%s", question.c_str()) == kReplyYes;
}

}  // namespace lumiset::openfx
