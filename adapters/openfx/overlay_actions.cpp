#include <memory>
#include <string_view>

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/actions.h"
#include "adapters/openfx/guard.h"
#include "adapters/openfx/overlay.h"

namespace lumiset::openfx {
namespace {

Properties propertiesOf(const HostInfo& host, InteractHandle interact) {
    Props properties = nullptr;
    const bool known = host.interact != nullptr && host.interact->getPropertySet(interact, &properties) == kOk;
    return host.properties(known ? properties : nullptr);
}

Status createOverlay(const HostInfo& host, InteractHandle interact, const Properties& properties) {
    const auto effect = static_cast<EffectHandle>(properties.getPointer(prop::kEffectInstance));
    auto overlay = std::make_unique<Overlay>(instanceOf(host, effect));
    int count = 0;
    for (const std::string& name : overlay->parameterNames()) {
        if (properties.set(prop::kSlaveToParam, name.c_str(), count)) {
            ++count;
        }
    }
    if (interact == nullptr || !properties.set(prop::kInstanceData, overlay.get())) {
        throw HostError("The host does not keep what belongs to an overlay.");
    }
    static_cast<void>(overlay.release());
    return kOk;
}

Status act(const HostInfo& host, std::string_view action, InteractHandle interact, const Properties& inArgs) {
    if (action == action::kDescribe) {
        return kOk;
    }
    const Properties properties = propertiesOf(host, interact);
    if (action == action::kCreateInstance) {
        return createOverlay(host, interact, properties);
    }
    auto* overlay = static_cast<Overlay*>(properties.getPointer(prop::kInstanceData));
    if (overlay == nullptr) {
        return kReplyDefault;
    }
    const auto redrawn = [&](Status status) {
        if (status == kOk && host.interact->redraw != nullptr) {
            host.interact->redraw(interact);
        }
        return status;
    };
    if (action == action::kDestroyInstance) {
        delete overlay;
        properties.set(prop::kInstanceData, static_cast<void*>(nullptr));
        return kOk;
    }
    if (action == action::kInteractDraw) {
        return overlay->draw(inArgs);
    }
    if (action == action::kPenDown) {
        return redrawn(overlay->penDown(inArgs));
    }
    if (action == action::kPenMotion) {
        return redrawn(overlay->penMotion(inArgs));
    }
    if (action == action::kPenUp || action == action::kLoseFocus) {
        return redrawn(overlay->penUp());
    }
    if (action == action::kKeyDown || action == action::kKeyRepeat) {
        return redrawn(overlay->keyDown(inArgs));
    }
    return kReplyDefault;
}

}  // namespace

Status actOnOverlay(std::size_t plugin, const char* action, const void* handle, Props inArgs) noexcept {
    return guarded(nullptr, nullptr, [&] {
        const std::shared_ptr<const HostInfo> host = slotOf(plugin).info();
        const auto interact = static_cast<InteractHandle>(const_cast<void*>(handle));
        return act(*host, action, interact, host->properties(inArgs));
    });
}

}  // namespace lumiset::openfx
