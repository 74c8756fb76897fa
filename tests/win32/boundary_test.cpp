// What a call cannot show: the layout of records that no effect reads yet, the places of operations that hosts never
// call, and that no interface has a virtual destructor, not even behind its last operation.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "host/effect_library.h"
#include "host/preset_saver.h"

extern "C" {
#include "tests/win32/contract.h"
}

namespace lumiset {
namespace {

static_assert(sizeof(ParamInfo) == PARAM_INFO_SIZE && sizeof(VideoFrameDesc) == FRAME_SIZE);
static_assert(sizeof(GPUTexture) == TEXTURE_SIZE && sizeof(FrameRenderInfo) == INFO_SIZE);
static_assert(offsetof(GPUTexture, handle) == TEXTURE_HANDLE && offsetof(GPUTexture, format) == TEXTURE_FORMAT &&
              offsetof(GPUTexture, width) == TEXTURE_WIDTH && offsetof(GPUTexture, height) == TEXTURE_HEIGHT &&
              offsetof(GPUTexture, flipped) == TEXTURE_FLIPPED);
static_assert(offsetof(VideoFrameDesc, flipped) == FRAME_FLIPPED &&
              offsetof(FrameRenderInfo, timeSeconds) == INFO_TIME);

template <class... Interfaces>
constexpr bool kNoVirtualDestructors = (!std::has_virtual_destructor_v<Interfaces> && ...);
static_assert(
    kNoVirtualDestructors<IUnknown, IEffectLibrary, IVideoEffect, IVideoGPUEffect, IParamToolTip, IFrameProcessor,
                          IHostServices, IEffectHost, IHostAllocator, IPresetSaver, IPresetEffect>);

/// The vtable slot behind a pointer to a virtual operation, which this compiler keeps as its byte offset plus one.
template <class Operation>
std::size_t slotOf(Operation operation) {
    std::size_t word = 0;
    std::memcpy(&word, &operation, sizeof word);
    return (word - 1) / sizeof(void*);
}

TEST(Interfaces, KeepThePlacesThatHostsNeverCall) {
    EXPECT_EQ(slotOf(&IFrameProcessor::DeleteThis), PROCESSOR_DESTRUCTOR);
    EXPECT_EQ(slotOf(&IPresetSaver::DeleteThis), PRESET_DESTRUCTOR);
    EXPECT_EQ(slotOf(&IVideoGPUEffect::LoadGPUPrograms), EFFECT_LOAD_GPU_PROGRAMS);
    EXPECT_EQ(slotOf(&IVideoGPUEffect::RenderFrameGPU), EFFECT_RENDER_FRAME_GPU);
    EXPECT_EQ(slotOf(&IEffectHost::GetHostName), HOST_NAME);
}

}  // namespace
}  // namespace lumiset
