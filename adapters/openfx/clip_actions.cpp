#include "adapters/openfx/clip_actions.h"

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/identity.h"

namespace lumiset::openfx {
namespace {

void setRegion(const Properties& outArgs, const char* name, const RectD& region) {
    outArgs.set(name, region.x1, 0);
    outArgs.set(name, region.y1, 1);
    outArgs.set(name, region.x2, 2);
    outArgs.set(name, region.y2, 3);
}

}  // namespace

// Effects make pictures transparent that were not: an opaque source's result is told as straight alpha. Components and
// depth stay those of the source.
Status getClipPreferences(const Instance& instance, const Properties& outArgs) {
    const Properties source = instance.sourceProperties();
    const std::string alpha = source.getString(prop::kPremultiplication, value::kUnpremultiplied);
    if (source.getString(prop::kComponents) != value::kRgb) {
        outArgs.set(prop::kPremultiplication, alpha == value::kOpaque ? value::kUnpremultiplied : alpha.c_str());
    }
    outArgs.set(prop::kFrameVarying, instance.effect().description.dependsOnTime() ? 1 : 0);
    return kOk;
}

Status getRegionOfDefinition(const Instance& instance, const Properties& inArgs, const Properties& outArgs) {
    RectD region{};
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    if (instance.host().effect->clipGetRegionOfDefinition(instance.source(), time, &region) != kOk) {
        return kReplyDefault;
    }
    setRegion(outArgs, prop::kRegionOfDefinitionOut, region);
    return kOk;
}

// Shares of the picture are what the effects work with: they need all of it for any part.
Status getRegionsOfInterest(const Instance& instance, const Properties& inArgs, const Properties& outArgs) {
    RectD region{};
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    if (instance.host().effect->clipGetRegionOfDefinition(instance.source(), time, &region) != kOk) {
        return kReplyDefault;
    }
    setRegion(outArgs, prop::kRegionOfInterestOfSource, region);
    return kOk;
}

Status isIdentity(const Instance& instance, const Properties& inArgs, const Properties& outArgs) {
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    if (!changesNothing(instance.valuesAt(time))) {
        return kReplyDefault;
    }
    outArgs.set(prop::kName, value::kClipSource);
    outArgs.set(prop::kTime, time);
    return kOk;
}

}  // namespace lumiset::openfx
