#include <algorithm>
#include <cmath>

#include "bindings/c/guard.h"
#include "bindings/c/handles.h"

namespace lumiset::bindings {
namespace {

hostkit::PictureView viewOf(const lumiset_picture* picture) {
    const lumiset_picture& known = neededStruct(picture, "a lumiset_picture");
    if (known.samples > LUMISET_FLOAT) {
        throw ArgumentError("A picture's samples are LUMISET_UINT8, LUMISET_UINT16 or LUMISET_FLOAT.");
    }
    return hostkit::interleavedPicture(known.data, known.width, known.height,
                                       static_cast<hostkit::SampleType>(known.samples),
                                       neededText(known.order, "a picture's order"), known.stride);
}

hostkit::FrameContext contextOf(double seconds, const lumiset_frame* frame) {
    hostkit::FrameContext context;
    context.timeSeconds = seconds;
    if (frame != nullptr) {
        const lumiset_frame& known = neededStruct(frame, "a lumiset_frame");
        if (known.field_order > 2) {
            throw ArgumentError("A frame's field order is 0, 1 or 2.");
        }
        context.pixelAspect = known.pixel_aspect;
        context.durationSeconds = known.duration;
        context.fields = known.field_order == 1   ? hostkit::FieldOrder::kTopFirst
                         : known.field_order == 2 ? hostkit::FieldOrder::kBottomFirst
                                                  : hostkit::FieldOrder::kProgressive;
    }
    for (const double number : {context.timeSeconds, context.pixelAspect, context.durationSeconds}) {
        if (!std::isfinite(number) || number < 0.0) {
            throw ArgumentError("Times and the shape of a pixel are numbers from 0 on.");
        }
    }
    return context;
}

}  // namespace
}  // namespace lumiset::bindings

using namespace lumiset;
using namespace lumiset::bindings;

lumiset_renderer* lumiset_renderer_new(const lumiset_look* look, double clip_seconds) {
    return lumiset_renderer_new_chain(&look, 1, clip_seconds);
}

lumiset_renderer* lumiset_renderer_new_chain(const lumiset_look* const* looks, size_t count, double clip_seconds) {
    return guardedPointer([&] {
        if (looks == nullptr || count == 0) {
            throw ArgumentError("The call needs one look or more.");
        }
        std::vector<hostkit::MaskedLook> chain;
        for (size_t i = 0; i < count; ++i) {
            const lumiset_look& look = needed(looks[i], "a look");
            if (look.shared != looks[0]->shared) {
                throw ArgumentError("The looks of a chain are made with one library.");
            }
            chain.push_back(look.masked);
        }
        if (!std::isfinite(clip_seconds) || clip_seconds < 0.0) {
            throw ArgumentError("The length of a clip is a number of seconds from 0 on.");
        }
        const SharedLibrary& library = looks[0]->shared;
        if (!(clip_seconds > 0.0) && std::any_of(chain.begin(), chain.end(), [](const hostkit::MaskedLook& each) {
                return hostkit::hasKeysInParts(each.look);
            })) {
            throw ArgumentError("Keys in parts of the clip need its length.");
        }
        return new lumiset_renderer{
            library, hostkit::buildChain(library->module.effectLibrary(), library->catalogue, chain, clip_seconds)};
    });
}

void lumiset_renderer_free(lumiset_renderer* renderer) {
    delete renderer;
}

lumiset_status lumiset_render(lumiset_renderer* renderer, const lumiset_picture* source,
                              const lumiset_picture* destination, double seconds) {
    return lumiset_render_frame(renderer, source, destination, seconds, nullptr);
}

lumiset_status lumiset_render_frame(lumiset_renderer* renderer, const lumiset_picture* source,
                                    const lumiset_picture* destination, double seconds, const lumiset_frame* frame) {
    return guarded([&] {
        lumiset_renderer& known = needed(renderer, "a renderer");
        const hostkit::PictureView from = viewOf(source);
        const hostkit::PictureView to = viewOf(destination);
        const hostkit::FrameContext context = contextOf(seconds, frame);
        const hostkit::ThreadPool::Turn turn(*known.shared->threads.get());
        known.renderer.render(from, to, context);
    });
}
