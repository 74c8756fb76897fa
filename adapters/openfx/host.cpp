#include "adapters/openfx/host.h"

#include "adapters/openfx/abi/names.h"

namespace lumiset::openfx {
namespace {

template <class Suite>
const Suite* optional(const Host& host, const char* name, int version) {
    return static_cast<const Suite*>(host.fetchSuite(host.host, name, version));
}

template <class Suite>
const Suite* required(const Host& host, const char* name) {
    const auto* suite = optional<Suite>(host, name, 1);
    if (suite == nullptr) {
        throw HostError("The host has no " + std::string(name) + ", without which no effect can work in it.");
    }
    return suite;
}

bool usesGarbageAsMessages(const std::string& hostName) {
    // DaVinci Resolve's second version of the suite has members that lead nowhere.
    return hostName.rfind("DaVinciResolve", 0) == 0;
}

}  // namespace

HostInfo::HostInfo(const Host& host) {
    if (host.fetchSuite == nullptr) {
        throw HostError("The host offers no suites.");
    }
    property = required<PropertySuite>(host, kPropertySuite);
    effect = required<ImageEffectSuite>(host, kImageEffectSuite);
    parameter = required<ParameterSuite>(host, kParameterSuite);
    multiThread = optional<MultiThreadSuite>(host, kMultiThreadSuite, 1);
    interact = optional<InteractSuite>(host, kInteractSuite, 1);
    draw = optional<DrawSuite>(host, kDrawSuite, 1);
    readProperties(properties(host.host));
    message = usesGarbageAsMessages(name) ? nullptr : optional<MessageSuite>(host, kMessageSuite, 2);
    persistentMessages =
        message != nullptr && message->setPersistentMessage != nullptr && message->clearPersistentMessage != nullptr;
    if (message == nullptr) {
        message = optional<MessageSuite>(host, kMessageSuite, 1);
    }
}

void HostInfo::readProperties(const Properties& properties) {
    name = properties.getString(prop::kName);
    overlays = properties.getInt(prop::kSupportsOverlays, 0) != 0;
    constexpr int kMostDepths = 16;
    for (int i = 0; i < kMostDepths; ++i) {
        std::string depth = properties.getString(prop::kSupportedDepths, "", i);
        if (depth.empty()) {
            break;
        }
        depths.push_back(std::move(depth));
    }
}

}  // namespace lumiset::openfx
