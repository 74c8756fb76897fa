// A module of one small effect that keeps every rule, unless the environment variable LUMISET_BROKEN names the one it
// breaks: what `lumiset validate` has to find.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>

#include "host/effect_library.h"
#include "host/pixel_format.h"

namespace {

using namespace lumiset;

bool breaks(std::string_view rule) {
    static const char* const broken = std::getenv("LUMISET_BROKEN");
    return broken != nullptr && rule == broken;
}

/// References of an object that ends with the last one.
template <class Object>
std::uint32_t release(Object* object, std::atomic<std::uint32_t>& references) {
    const std::uint32_t left = --references;
    if (left == 0) {
        delete object;
    }
    return breaks("release-answers-nothing") ? 1 : left;
}

template <class... Interfaces>
Result query(IUnknown* object, std::atomic<std::uint32_t>& references, const Guid& iid, void** out) {
    if (out == nullptr) {
        return kResultNoInterface;
    }
    if (iid == IUnknown::kId || ((iid == Interfaces::kId) || ...) || breaks("answers-for-strangers")) {
        *out = object;
        references += breaks("query-without-reference") ? 0 : 1;
        return kResultOk;
    }
    if (!breaks("leaves-the-place-unset")) {
        *out = nullptr;
    }
    return kResultNoInterface;
}

float safeShare(float value) {
    return std::isnan(value) ? 0.5F : std::fmin(std::fmax(value, 0.0F), 1.0F);
}

/// Mixes with the negative by "Amount", upside up, in a third of the picture where "Where" says so.
class Negative final : public IVideoGPUEffect {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return query<IVideoEffect, IVideoGPUEffect>(this, m_references, iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return ++m_references; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return release(this, m_references); }
    const char* LUMISET_CALL GetEffectName() noexcept override { return breaks("no-name") ? "" : "Negative"; }
    std::uint32_t LUMISET_CALL GetEffectFlags() noexcept override { return 0; }

    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override {
        if (out == nullptr || (index > 1 && !breaks("endless-parameters"))) {
            return false;
        }
        if (!breaks("half-filled-record")) {
            *out = {};
        }
        out->visible = 1;
        if (index == 0) {
            out->type = kParamSlider;
            out->minimum = 0.0F;
            out->slider = {100.0F, 1};
            out->defaultValue.slider = breaks("default-out-of-range") ? 1.5F : 0.5F;
            std::strcpy(out->label, "Amount");
        } else {
            out->type = kParamChoice;
            out->itemCount = 2;
            std::strcpy(out->items[0], "All");
            std::strcpy(out->items[1], breaks("item-without-label") ? "" : "Left Third");
            std::strcpy(out->label, "Where");
        }
        return true;
    }
    const char* LUMISET_CALL GetPresetName(std::uint32_t preset) noexcept override {
        return preset < 2 ? "Preset" : nullptr;
    }
    bool LUMISET_CALL GetPresetValue(std::uint32_t preset, std::uint32_t slot, ParamValue* out) noexcept override {
        if (out == nullptr || preset > 1 || slot > 1) {
            return false;
        }
        *out = {};
        if (slot == 0) {
            out->slider = breaks("preset-out-of-range") ? -1.0F : 0.75F;
        } else {
            out->choice = preset;
        }
        return true;
    }

    bool LUMISET_CALL ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void*,
                                   const VideoFrameDesc* destination, const FrameRenderInfo* info) noexcept override;

    bool LUMISET_CALL InitGPU(IEffectHost*, GPUResources*, GPUProgramSet*, std::uint32_t) noexcept override {
        return false;
    }
    bool LUMISET_CALL ProcessFrameGPU(std::uint32_t, IEffectHost*, GPUResources*, const GPUFrameDesc*, void*,
                                      GPUFrameDesc*, const FrameRenderInfo*) noexcept override {
        return false;
    }
    bool LUMISET_CALL LoadGPUPrograms(IEffectHost*, GPUProgramSet*, std::uint32_t) noexcept override { return false; }
    bool LUMISET_CALL RenderFrameGPU(IEffectHost*, const GPUFrameDesc*, void*, GPUFrameDesc*,
                                     const FrameRenderInfo*) noexcept override {
        return false;
    }

private:
    std::atomic<std::uint32_t> m_references{breaks("born-with-two") ? 2U : 1U};
};

bool isSound(const VideoFrameDesc& frame) {
    const auto format = static_cast<std::int32_t>(frame.format);
    const bool isFloat = isFloatFormat(format);
    return frame.data != nullptr && frame.width > 0 && frame.height > 0 && AlphaIndex(format) >= 0 &&
           frame.bytesPerPixel == formatBytesPerPixel(format) && frame.stride != INT32_MIN &&
           std::llabs(frame.stride) >= std::int64_t{frame.width} * frame.bytesPerPixel &&
           (!isFloat || reinterpret_cast<std::uintptr_t>(frame.data) % 4 == 0);
}

struct Settings {
    float amount = 0.5F;
    std::uint32_t where = 0;
};

Settings settingsFrom(IEffectHost* host) {
    ParamValue amount{};
    amount.slider = 0.5F;
    ParamValue where{};
    if (host != nullptr) {
        host->GetParamValue(0, &amount, breaks("asks-by-another-type") ? kParamColor : kParamSlider);
        host->GetParamValue(1, &where, kParamChoice);
        if (breaks("calls-a-reserved-slot")) {
            host->Reserved5();
        }
    }
    return {breaks("believes-numbers") ? amount.slider : safeShare(amount.slider), where.choice < 2 ? where.choice
                                                                                   : breaks("choice-past-its-end")
                                                                                       ? 1U
                                                                                       : 0U};
}

template <class Sample>
void negate(const VideoFrameDesc& from, const VideoFrameDesc& to, const Settings& settings, const FrameRenderInfo& info,
            float full, float* scratch) {
    const std::int32_t width = breaks("leaves-the-rectangle") ? to.width : std::min(from.width, to.width);
    const std::int32_t height = std::min(from.height, to.height);
    const std::int32_t alpha = AlphaIndex(static_cast<std::int32_t>(from.format));
    const bool turned = (from.flipped != 0) != (to.flipped != 0) && !breaks("row-order-shows");
    static std::atomic<int> s_frames{0};
    const int number = ++s_frames;
    static std::atomic<float> s_shared = 0.0F;
    for (std::int32_t y = 0; y < height; ++y) {
        const std::int32_t stride = breaks("ignores-the-strides-sign") ? std::abs(from.stride) : from.stride;
        auto* in = reinterpret_cast<Sample*>(static_cast<char*>(from.data) +
                                             std::ptrdiff_t{turned ? height - 1 - y : y} * stride);
        auto* out = reinterpret_cast<Sample*>(static_cast<char*>(to.data) + std::ptrdiff_t{y} * to.stride);
        if (breaks("reads-beyond") && y == height - 1) {
            s_shared = static_cast<float>(*static_cast<volatile Sample*>(in + 4 * from.width));
        }
        for (std::int32_t x = 0; x < width; ++x) {
            if (breaks("leaves-a-pixel") && x == 2 && y == 0) {
                continue;
            }
            scratch[x] = settings.where == 1 && 3 * x >= width ? 0.0F : settings.amount;
            for (std::int32_t c = 0; c < 4; ++c) {
                const auto value = static_cast<float>(in[4 * x + c]);
                float result = c == alpha ? value : value + scratch[x] * (full - 2.0F * value);
                if (breaks("alpha-of-one-format-alone") && c == 0 && alpha == 0) {
                    result = full;
                } else if (breaks("moves-without-saying") && info.timeSeconds > 1.0 && c != alpha) {
                    result = full - result;
                } else if (breaks("remembers-frames") && number % 5 == 0 && c != alpha) {
                    result = full - result;
                } else if (breaks("bad-aspect") && (info.flags & FrameRenderInfo::kHasPixelAspect) != 0 &&
                           !(info.pixelAspect > 0.0)) {
                    result = 0.0F;
                }
                if (breaks("not-finite") && x == 0 && full == 1.0F) {
                    result = std::nanf("");
                }
                if (breaks("shares-scratch")) {
                    s_shared = result;
                    std::this_thread::yield();
                    result = s_shared;
                }
                out[4 * x + c] = static_cast<Sample>(result);
            }
        }
        if (breaks("writes-padding") && to.stride > to.width * to.bytesPerPixel) {
            out[4 * to.width] = 0;
        }
        if (breaks("writes-the-source")) {
            in[0] = out[0];
        }
    }
}

bool Negative::ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void*, const VideoFrameDesc* destination,
                            const FrameRenderInfo* info) noexcept {
    if (source == nullptr || destination == nullptr || source->format != destination->format) {
        return false;
    }
    if (!breaks("takes-any-frame") && (!isSound(*source) || !isSound(*destination))) {
        return false;
    }
    if (source->data == nullptr || destination->data == nullptr || (breaks("needs-a-record") && info == nullptr)) {
        return false;
    }
    if (breaks("no-single-columns") && source->width == 1) {
        return false;
    }
    FrameRenderInfo plain{};
    const Settings settings = settingsFrom(host);

    // A row of scratch memory, the host's where it lends some.
    void* object = nullptr;
    IHostAllocator* allocator = nullptr;
    if (host != nullptr && host->QueryInterface(IHostAllocator::kId, &object) == kResultOk) {
        allocator = static_cast<IHostAllocator*>(object);
    }
    void* block = nullptr;
    const auto bytes = static_cast<std::uint32_t>(destination->width) * 4;
    if (allocator != nullptr) {
        allocator->AllocBytes(&block, bytes);
    } else {
        block = std::malloc(bytes);
    }
    bool done = block != nullptr;
    if (done) {
        if (destination->format <= kFormatArgb8) {
            negate<std::uint8_t>(*source, *destination, settings, info != nullptr ? *info : plain, 255.0F,
                                 static_cast<float*>(block));
        } else {
            negate<float>(*source, *destination, settings, info != nullptr ? *info : plain, 1.0F,
                          static_cast<float*>(block));
        }
    } else if (breaks("fails-too-late")) {
        static_cast<unsigned char*>(destination->data)[0] = 7;
    } else if (breaks("crashes-without-memory")) {
        std::abort();
    }
    if (allocator != nullptr) {
        if (block != nullptr && !breaks("keeps-memory")) {
            allocator->FreeBytes(block);
        }
        if (!breaks("keeps-the-host")) {
            allocator->Release();
        }
    } else {
        std::free(block);
    }
    return done;
}

/// Stores the words of the values behind the effect's name.
class Saver final : public IPresetSaver {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return query<IPresetSaver>(this, m_references, iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return ++m_references; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return release(this, m_references); }
    bool LUMISET_CALL LoadPreset(void*, IPresetEffect* effect, std::uint32_t, const wchar_t* path,
                                 PresetOutcome* outcome) noexcept override {
        PresetOutcome unused{};
        outcome = outcome != nullptr ? outcome : &unused;
        outcome->status = kPresetUnreadable;
        if (path == nullptr) {
            return false;
        }
        std::ifstream stream(std::filesystem::path(path), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        float amount = 0.0F;
        unsigned where = 0;
        if (breaks("half-read-file")) {
            outcome->count = 2;
        }
        if (std::sscanf(text.c_str(), "Negative %f %u .", &amount, &where) != 2 || text != textOf(amount, where) ||
            (safeShare(amount) != amount && !breaks("believes-files"))) {
            return breaks("answers-true");
        }
        outcome->status = kPresetDone;
        outcome->count = 2;
        std::strcpy(outcome->name, "Preset");
        outcome->entries[0].type = kParamSlider;
        outcome->entries[0].value.slider = breaks("reads-another-value") ? 0.1F : amount;
        outcome->entries[1].type = kParamChoice;
        outcome->entries[1].value.choice = where;
        return effect != nullptr;
    }
    bool LUMISET_CALL SavePreset(void* owner, IPresetEffect* effect, std::uint32_t index, const wchar_t* path,
                                 PresetOutcome* outcome) noexcept override {
        ParamValue amount{};
        ParamValue where{};
        effect->GetParamValue(0, &amount, kParamSlider);
        effect->GetParamValue(1, &where, kParamChoice);
        std::ofstream stream(std::filesystem::path(path), std::ios::binary);
        stream << textOf(amount.slider, where.choice);
        stream.close();
        return stream.good() && LoadPreset(owner, effect, index, path, outcome);
    }
    void LUMISET_CALL DeleteThis() noexcept override { delete this; }

private:
    static std::string textOf(float amount, unsigned where) {
        char text[80];
        std::snprintf(text, sizeof text, "Negative %.6f %u .", static_cast<double>(amount), where);
        return text;
    }
    std::atomic<std::uint32_t> m_references{1};
};

class Services final : public IHostServices {
public:
    Result LUMISET_CALL QueryInterface(const Guid&, void** out) noexcept override {
        *out = nullptr;
        return kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    bool LUMISET_CALL GetForcedCpu() noexcept override { return false; }
    bool LUMISET_CALL SetForcedCpu(bool) noexcept override { return false; }
    bool LUMISET_CALL GetKnobsDragVertical() noexcept override { return false; }
    bool LUMISET_CALL SetKnobsDragVertical(bool) noexcept override { return false; }
    bool LUMISET_CALL GetKeyFramesVsPresets() noexcept override { return false; }
    bool LUMISET_CALL SetKeyFramesVsPresets(bool) noexcept override { return false; }
    bool LUMISET_CALL GetCropOverscan() noexcept override { return false; }
    bool LUMISET_CALL SetCropOverscan(bool) noexcept override { return false; }
};

class Library final : public IEffectLibrary {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return query<IEffectLibrary>(this, m_references, iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return ++m_references; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return release(this, m_references); }
    const char* LUMISET_CALL GetLibraryName() noexcept override { return "Small"; }
    IVideoGPUEffect* LUMISET_CALL CreateEffect(std::uint32_t index) noexcept override {
        return index == 0 || (breaks("effect-past-the-last") && index == 0xFFFFFFFFU) ? new Negative : nullptr;
    }
    std::uint32_t LUMISET_CALL LibraryQuery(std::uint32_t, std::uint32_t) noexcept override { return 0; }
    IHostServices* LUMISET_CALL GetHostServices() noexcept override {
        static Services s_services;
        return &s_services;
    }
    IFrameProcessor* LUMISET_CALL CreateFrameProcessor() noexcept override { return nullptr; }
    IPresetSaver* LUMISET_CALL CreatePresetSaver() noexcept override { return new Saver; }

private:
    std::atomic<std::uint32_t> m_references{1};
};

}  // namespace

__attribute__((visibility("default"))) IEffectLibrary* GetEffectsLibrary() {
    return new Library;
}

__attribute__((visibility("default"))) std::int32_t CanUnloadDLLNow() {
    return breaks("never-unloads") ? 0 : 1;
}
