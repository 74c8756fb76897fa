// A whole host in one file: loads the effects module, lists its effects, and applies one with a preset to a picture.
// It needs the headers in host/ and nothing else.
//
//   minimal_host MODULE                               the effects and their presets
//   minimal_host MODULE EFFECT PRESET IN.pam OUT.pam  renders; PAM is the simplest picture file with transparency
//
// On Linux: g++ -std=c++20 -I FOLDER_ABOVE_HOST minimal_host.cpp -ldl

// ---- What it includes
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/effect_library.h"
#include "host/pixel_format.h"

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN  // the rest has an IUnknown of its own
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace lumiset;

// ---- Loading
// The module exports GetEffectsLibrary by its plain name. What comes from it must be released before it is unloaded;
// this program lets it stay until the end.
using GetEffectsLibraryCall = IEffectLibrary* (*)();

GetEffectsLibraryCall loadModule(const char* path) {
#ifdef _WIN32
    const HMODULE module = LoadLibraryA(path);
    void* address = module != nullptr ? reinterpret_cast<void*>(GetProcAddress(module, "GetEffectsLibrary")) : nullptr;
#else
    void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* address = module != nullptr ? dlsym(module, "GetEffectsLibrary") : nullptr;
#endif
    if (address == nullptr) {
        throw std::runtime_error(std::string(path) + " is no effects module");
    }
    return reinterpret_cast<GetEffectsLibraryCall>(address);
}

// Objects come with one reference, which goes back by Release.
struct GiveBack {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, GiveBack>;

// ---- Memory
// Optional: scratch memory for the effects, aligned to 32 bytes. A host that counts or keeps its memory does it here.
class Allocator final : public IHostAllocator {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        const bool known = iid == IUnknown::kId || iid == IHostAllocator::kId;
        *out = known ? this : nullptr;
        return known ? kResultOk : kResultNoInterface;
    }
    // It lives as long as the program; nobody's reference keeps it.
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 1; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }

    void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept override {
        *out = ::operator new(size, kAlignment, std::nothrow);
    }
    void LUMISET_CALL FreeBytes(void* block) noexcept override { ::operator delete(block, kAlignment); }
    std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept override {
        const std::int64_t stride = (std::int64_t{width} * bytesPerPixel + 31) / 32 * 32;
        *out = nullptr;
        if (width > 0 && height > 0 && stride * height <= INT32_MAX) {
            *strideOut = static_cast<std::int32_t>(stride);
            AllocBytes(out, static_cast<std::uint32_t>(stride * height));
        }
        return *out != nullptr ? 1 : 0;
    }
    void LUMISET_CALL FreeImage(void* block) noexcept override { FreeBytes(block); }

private:
    static constexpr std::align_val_t kAlignment{32};
};

// ---- The host object
// An effect asks it for the values of its parameters while it renders. It finds the default filled in, so parameters
// that nobody has touched need no answer.
class Host final : public IEffectHost {
public:
    struct Setting {
        std::uint32_t index;
        ParamValue value;
    };
    std::vector<Setting> settings;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IUnknown::kId ? this : nullptr;
        return *out != nullptr ? kResultOk : m_allocator.QueryInterface(iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 1; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t) noexcept override {
        for (const Setting& setting : settings) {
            if (setting.index == index) {
                *out = setting.value;
            }
        }
    }
    void LUMISET_CALL Reserved4() noexcept override {}
    void LUMISET_CALL Reserved5() noexcept override {}
    void LUMISET_CALL Reserved6() noexcept override {}
    void LUMISET_CALL Reserved7() noexcept override {}
    void LUMISET_CALL GetHostName(const char** out) noexcept override { *out = "Minimal Host"; }

private:
    Allocator m_allocator;
};

// ---- Effects and presets
// CreateEffect and GetPresetName answer null behind the last one.
Held<IVideoGPUEffect> findEffect(IEffectLibrary& library, const std::string& name) {
    for (std::uint32_t i = 0;; ++i) {
        Held<IVideoGPUEffect> effect(library.CreateEffect(i));
        if (effect == nullptr) {
            throw std::runtime_error("there is no effect " + name);
        }
        if (effect->GetEffectName() == name) {
            return effect;
        }
    }
}

std::uint32_t findPreset(IVideoEffect& effect, const std::string& name) {
    for (std::uint32_t i = 0; effect.GetPresetName(i) != nullptr; ++i) {
        if (effect.GetPresetName(i) == name) {
            return i;
        }
    }
    throw std::runtime_error("the effect has no preset " + name);
}

// A preset's slots are parameter indices where there are as many of both; else they count the parameters that carry a
// value, which group boxes do not.
std::vector<Host::Setting> presetValues(IVideoEffect& effect, std::uint32_t preset) {
    ParamInfo info{};
    ParamValue value{};
    std::uint32_t parameters = 0;
    while (effect.GetParamInfo(parameters, &info)) {
        ++parameters;
    }
    std::uint32_t slots = 0;
    while (effect.GetPresetValue(preset, slots, &value)) {
        ++slots;
    }
    std::vector<Host::Setting> settings;
    std::uint32_t slot = 0;
    for (std::uint32_t i = 0; i < parameters; ++i) {
        effect.GetParamInfo(i, &info);
        const bool valued = info.type != kParamGroup;
        if (valued && effect.GetPresetValue(preset, slots == parameters ? i : slot, &value)) {
            settings.push_back({i, value});
        }
        slot += valued ? 1 : 0;
    }
    return settings;
}

// ---- Rendering
struct Picture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> pixels;  // blue, green, red, alpha; the top row first

    VideoFrameDesc frame() { return {pixels.data(), width, height, 4 * width, 4, {}, kFormatBgra8, 0}; }
};

Picture render(IVideoEffect& effect, Host& host, Picture& source, double timeSeconds) {
    Picture result = source;
    const VideoFrameDesc from = source.frame();
    const VideoFrameDesc to = result.frame();
    FrameRenderInfo info{};
    info.timeSeconds = timeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    if (!effect.ProcessFrame(&host, &from, nullptr, &to, &info)) {
        throw std::runtime_error("the effect did not render the picture");
    }
    return result;
}

// ---- Pictures in files
void swapRedAndBlue(std::vector<std::uint8_t>& pixels) {
    for (std::size_t i = 0; i + 3 < pixels.size(); i += 4) {
        std::swap(pixels[i], pixels[i + 2]);
    }
}

Picture readPam(const char* path) {
    std::ifstream file(path, std::ios::binary);
    Picture picture;
    int depth = 0;
    for (std::string word; file >> word && word != "ENDHDR";) {
        if (word == "WIDTH") {
            file >> picture.width;
        } else if (word == "HEIGHT") {
            file >> picture.height;
        } else if (word == "DEPTH") {
            file >> depth;
        }
    }
    file.get();  // the line's end
    if (!file || depth != 4 || picture.width < 1 || picture.height < 1 || picture.width > 32768 ||
        picture.height > 32768) {
        throw std::runtime_error(std::string(path) + " is no PAM file of red, green, blue and alpha");
    }
    picture.pixels.resize(std::size_t{4} * static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    if (!file.read(reinterpret_cast<char*>(picture.pixels.data()),
                   static_cast<std::streamsize>(picture.pixels.size()))) {
        throw std::runtime_error(std::string(path) + " ends too early");
    }
    swapRedAndBlue(picture.pixels);
    return picture;
}

void writePam(const char* path, Picture picture) {
    swapRedAndBlue(picture.pixels);
    std::ofstream file(path, std::ios::binary);
    file << "P7\nWIDTH " << picture.width << "\nHEIGHT " << picture.height
         << "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    file.write(reinterpret_cast<const char*>(picture.pixels.data()),
               static_cast<std::streamsize>(picture.pixels.size()));
    if (!file.flush()) {
        throw std::runtime_error(std::string(path) + " cannot be written");
    }
}

// ---- All of it
void list(IEffectLibrary& library) {
    for (std::uint32_t i = 0;; ++i) {
        const Held<IVideoGPUEffect> effect(library.CreateEffect(i));
        if (effect == nullptr) {
            return;
        }
        std::printf("%s\n", effect->GetEffectName());
        for (std::uint32_t preset = 0; effect->GetPresetName(preset) != nullptr; ++preset) {
            std::printf("    %s\n", effect->GetPresetName(preset));
        }
    }
}

int main(int argc, char** argv) {
    try {
        if (argc != 2 && argc != 6) {
            throw std::runtime_error("usage: minimal_host MODULE [EFFECT PRESET IN.pam OUT.pam]");
        }
        const Held<IEffectLibrary> library(loadModule(argv[1])());
        if (library == nullptr) {
            throw std::runtime_error("there is not enough memory");
        }
        if (argc == 2) {
            list(*library);
            return 0;
        }
        const Held<IVideoGPUEffect> effect = findEffect(*library, argv[2]);
        Host host;
        host.settings = presetValues(*effect, findPreset(*effect, argv[3]));
        Picture source = readPam(argv[4]);
        writePam(argv[5], render(*effect, host, source, 0.0));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "minimal_host: %s\n", error.what());
        return 1;
    }
}
