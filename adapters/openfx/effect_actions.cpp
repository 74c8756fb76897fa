#include <memory>
#include <string_view>

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/actions.h"
#include "adapters/openfx/changes.h"
#include "adapters/openfx/clip_actions.h"
#include "adapters/openfx/describe.h"
#include "adapters/openfx/guard.h"
#include "adapters/openfx/messages.h"
#include "adapters/openfx/overlay.h"
#include "adapters/openfx/render.h"

namespace lumiset::openfx {
namespace {

const Effect& effectOf(std::size_t plugin) {
    return *Bundle::get()->effects()[plugin];
}

/// What the host keeps for us with one of its objects.
Properties propertiesOf(const HostInfo& host, EffectHandle effect) {
    Props properties = nullptr;
    return host.properties(host.effect->getPropertySet(effect, &properties) == kOk ? properties : nullptr);
}

void createInstance(const std::shared_ptr<const HostInfo>& host, std::size_t plugin, EffectHandle effect) {
    auto instance = std::make_unique<Instance>(host, *Bundle::get(), effectOf(plugin), effect);
    if (!propertiesOf(*host, effect).set(prop::kInstanceData, instance.get())) {
        throw HostError("The host does not keep what belongs to an effect.");
    }
    static_cast<void>(instance.release());
    Bundle::get()->addInstance();
}

void destroyInstance(const HostInfo& host, EffectHandle effect) {
    const Properties properties = propertiesOf(host, effect);
    auto* instance = static_cast<Instance*>(properties.getPointer(prop::kInstanceData));
    properties.set(prop::kInstanceData, static_cast<void*>(nullptr));
    if (instance != nullptr) {
        delete instance;
        // MLT has an instance for each frame.
        Bundle::get()->removeInstance(host.tellsNoChanges());
    }
}

Status renderGuarded(const Instance& instance, const Properties& inArgs) {
    const HostInfo& host = instance.host();
    const Status status = guarded(&host, instance.handle(), [&] {
        render(instance, inArgs);
        return kOk;
    });
    if (status == kOk) {
        clearComplaint(host, instance.handle());
    }
    return status;
}

Status describePlugin(const HostInfo& host, std::size_t plugin, EffectHandle descriptor, MainEntry* overlay) {
    const Effect& effect = effectOf(plugin);
    describe(host, effect, descriptor, host.overlays && hasHandles(effect) ? overlay : nullptr);
    return kOk;
}

Status act(std::size_t plugin, MainEntry* overlay, std::string_view action, EffectHandle effect, Props in, Props out) {
    if (action == action::kLoad) {
        slotOf(plugin).load();
        return kOk;
    }
    if (action == action::kUnload) {
        return kOk;  // a load follows at once, or nothing does
    }
    const std::shared_ptr<const HostInfo> host = slotOf(plugin).info();
    const Properties inArgs = host->properties(in);
    const Properties outArgs = host->properties(out);
    if (action == action::kDescribe) {
        return describePlugin(*host, plugin, effect, overlay);
    }
    if (action == action::kDescribeInContext) {
        describeInContext(*host, effectOf(plugin), effect);
        return kOk;
    }
    if (action == action::kCreateInstance) {
        createInstance(host, plugin, effect);
        return kOk;
    }
    if (action == action::kDestroyInstance) {
        destroyInstance(*host, effect);
        return kOk;
    }
    if (action == action::kPurgeCaches) {
        Bundle::get()->freeScratch();
        return kOk;
    }
    if (action == action::kRender) {
        return renderGuarded(instanceOf(*host, effect), inArgs);
    }
    if (action == action::kIsIdentity) {
        return isIdentity(instanceOf(*host, effect), inArgs, outArgs);
    }
    if (action == action::kGetClipPreferences) {
        return getClipPreferences(instanceOf(*host, effect), outArgs);
    }
    if (action == action::kGetRegionOfDefinition) {
        return getRegionOfDefinition(instanceOf(*host, effect), inArgs, outArgs);
    }
    if (action == action::kGetRegionsOfInterest) {
        return getRegionsOfInterest(instanceOf(*host, effect), inArgs, outArgs);
    }
    if (action == action::kInstanceChanged) {
        return instanceChanged(instanceOf(*host, effect), inArgs);
    }
    return kReplyDefault;
}

}  // namespace

const Instance& instanceOf(const HostInfo& host, EffectHandle effect) {
    const auto* instance = static_cast<const Instance*>(propertiesOf(host, effect).getPointer(prop::kInstanceData));
    if (instance == nullptr) {
        throw HostError("The host uses an effect that it has not created.");
    }
    return *instance;
}

Status actOnEffect(std::size_t plugin, MainEntry* overlay, const char* action, const void* handle, Props inArgs,
                   Props outArgs) noexcept {
    return guarded(nullptr, nullptr, [&] {
        const auto effect = static_cast<EffectHandle>(const_cast<void*>(handle));
        return act(plugin, overlay, action, effect, inArgs, outArgs);
    });
}

}  // namespace lumiset::openfx
