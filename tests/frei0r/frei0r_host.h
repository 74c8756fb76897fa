#pragma once

// A small frei0r host, and what its pictures are held against: the same effect rendered by the host kit.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "adapters/frei0r/frei0r_abi.h"
#include "hostkit/dynamic_library.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/module.h"
#include "hostkit/renderer.h"

namespace lumiset::frei0r {

/// One plug-in file, loaded from the path that a host would find it under.
class PluginFile {
public:
    explicit PluginFile(const std::filesystem::path& path) : m_file(path) {
        resolve(init, "f0r_init");
        resolve(deinit, "f0r_deinit");
        resolve(getPluginInfo, "f0r_get_plugin_info");
        resolve(getParamInfo, "f0r_get_param_info");
        resolve(construct, "f0r_construct");
        resolve(destruct, "f0r_destruct");
        resolve(setParamValue, "f0r_set_param_value");
        resolve(getParamValue, "f0r_get_param_value");
        resolve(update, "f0r_update");
    }
    [[nodiscard]] Frei0rPluginInfo info() const {
        Frei0rPluginInfo info{};
        getPluginInfo(&info);
        return info;
    }
    [[nodiscard]] Frei0rParamInfo parameter(int index) const {
        Frei0rParamInfo info{};
        getParamInfo(&info, index);
        return info;
    }
    /// Place of the parameter called `name`, -1 for none.
    [[nodiscard]] int find(const std::string& name) const {
        for (int i = 0; i < info().parameterCount; ++i) {
            if (parameter(i).name == name) {
                return i;
            }
        }
        return -1;
    }

    decltype(&f0r_init) init = nullptr;
    decltype(&f0r_deinit) deinit = nullptr;
    decltype(&f0r_get_plugin_info) getPluginInfo = nullptr;
    decltype(&f0r_get_param_info) getParamInfo = nullptr;
    decltype(&f0r_construct) construct = nullptr;
    decltype(&f0r_destruct) destruct = nullptr;
    decltype(&f0r_set_param_value) setParamValue = nullptr;
    decltype(&f0r_get_param_value) getParamValue = nullptr;
    decltype(&f0r_update) update = nullptr;

private:
    template <class Function>
    void resolve(Function& function, const char* name) {
        function = reinterpret_cast<Function>(m_file.symbol(name));
        if (function == nullptr) {
            throw std::runtime_error(std::string("not exported: ") + name);
        }
    }

    hostkit::DynamicLibrary m_file;
};

using Pixels = std::vector<std::uint32_t>;

/// One instance of a plug-in.
class Use {
public:
    Use(const PluginFile& file, int width, int height)
        : m_file(file),
          m_size(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
          m_instance(file.construct(static_cast<unsigned>(width), static_cast<unsigned>(height))) {
        if (m_instance == nullptr) {
            throw std::runtime_error("no instance");
        }
    }
    ~Use() { m_file.destruct(m_instance); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    void set(const std::string& name, double value) { m_file.setParamValue(m_instance, &value, m_file.find(name)); }
    void set(const std::string& name, Frei0rColor value) {
        m_file.setParamValue(m_instance, &value, m_file.find(name));
    }
    void setPreset(const std::string& preset) {
        const char* text = preset.c_str();
        m_file.setParamValue(m_instance, &text, m_file.find("Preset"));
    }
    [[nodiscard]] double number(int index) const {
        double value = -1.0;
        m_file.getParamValue(m_instance, &value, index);
        return value;
    }
    [[nodiscard]] Frei0rColor color(int index) const {
        Frei0rColor value{-1.0F, -1.0F, -1.0F};
        m_file.getParamValue(m_instance, &value, index);
        return value;
    }
    [[nodiscard]] std::string text(int index) const {
        const char* value = nullptr;
        m_file.getParamValue(m_instance, &value, index);
        return value;
    }
    [[nodiscard]] Frei0rInstance instance() const { return m_instance; }

    [[nodiscard]] Pixels render(const Pixels& source, double time) {
        constexpr std::uint32_t kGuard = 0xA5C3F00DU;
        Pixels result(m_size + 16, kGuard);
        m_file.update(m_instance, time, source.data(), result.data());
        for (std::size_t i = m_size; i < result.size(); ++i) {
            EXPECT_EQ(result[i], kGuard) << "written behind the picture";
        }
        result.resize(m_size);
        return result;
    }

private:
    const PluginFile& m_file;
    std::size_t m_size;
    Frei0rInstance m_instance;
};

/// The folder that the plug-ins are built into, and one of its files.
inline std::filesystem::path pluginFolder() {
    return LUMISET_FREI0R_FOLDER;
}
inline std::filesystem::path pluginPath(const std::string& name) {
    return pluginFolder() / (name + LUMISET_FREI0R_SUFFIX);
}

/// The module and its effects, as the host kit knows them.
struct Reference {
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};

    [[nodiscard]] Pixels render(const hostkit::ParameterStore& parameters, const Pixels& source, int width,
                                const hostkit::FrameContext& context) const {
        const std::vector<hostkit::EffectStage> chain{
            {hostkit::ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(parameters.effect().index)),
             parameters}};
        Pixels in = source;
        Pixels out(source.size());
        const auto frame = [&](Pixels& pixels) {
            const int height = static_cast<int>(pixels.size()) / width;
            return VideoFrameDesc{pixels.data(), width, height, width * 4, 4, {}, kFormatBgra8, 0};
        };
        hostkit::Renderer(chain, kFormatBgra8).render(frame(in), frame(out), context);
        return out;
    }
};

inline const Reference& reference() {
    static const Reference made;
    return made;
}

/// A frame at that time, with square pixels and without fields.
inline hostkit::FrameContext at(double seconds) {
    hostkit::FrameContext context;
    context.timeSeconds = seconds;
    context.pixelAspect = 1.0;
    return context;
}

/// Colours that run over the picture with a round transparent part and some noise.
inline Pixels testPicture(int width, int height) {
    Pixels pixels;
    std::uint32_t noise = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525U + 1013904223U;
            const bool inside =
                (2 * x - width) * (2 * x - width) + (2 * y - height) * (2 * y - height) < width * height;
            const auto blue = static_cast<std::uint32_t>(255 * x / width);
            const auto green = static_cast<std::uint32_t>(255 * y / height);
            pixels.push_back((inside ? 255U : 60U) << 24U | (noise >> 24U) << 16U | green << 8U | blue);
        }
    }
    return pixels;
}

}  // namespace lumiset::frei0r
