#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "host/preset_saver.h"

namespace lumiset::test {

/// An effect of the tests' own, as a host hands it to the preset saver.
class PresetEffectStub final : public IPresetEffect {
public:
    Result LUMISET_CALL QueryInterface(const Guid&, void** out) noexcept override {
        *out = nullptr;
        return kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    const char* LUMISET_CALL GetEffectName() noexcept override { return effectName; }
    const char* LUMISET_CALL GetLibraryName() noexcept override { return effectLibrary; }
    bool LUMISET_CALL GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept override {
        if (index >= entries.size()) {
            return false;
        }
        *out = {};
        out->type = entries[index].type;
        return true;
    }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t) noexcept override {
        *out = entries[index].value;
    }

    const char* effectName = "Outline";
    const char* effectLibrary = "Vantrel Lumiset V";
    std::vector<PresetEntry> entries;
};

/// The path as the saver takes it, in every locale.
inline std::wstring wide(const std::filesystem::path& path) {
    const std::u32string text = path.u32string();
    return sizeof(wchar_t) == 4 ? std::wstring(text.begin(), text.end()) : path.wstring();
}

/// A folder that is empty at first and gone with the object.
class PresetFolder {
public:
    PresetFolder() {
        static int s_count = 0;
        const auto marker = reinterpret_cast<std::uintptr_t>(&s_count);
        do {
            m_path = std::filesystem::temp_directory_path() /
                     ("lumiset_presets_" + std::to_string(marker) + '_' + std::to_string(s_count++));
        } while (!std::filesystem::create_directory(m_path));
    }
    ~PresetFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    PresetFolder(const PresetFolder&) = delete;
    PresetFolder& operator=(const PresetFolder&) = delete;

    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const { return m_path / name; }
    [[nodiscard]] std::ptrdiff_t entries() const {
        return std::distance(std::filesystem::directory_iterator(m_path), std::filesystem::directory_iterator());
    }

private:
    std::filesystem::path m_path;
};

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeFile(const std::filesystem::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

}  // namespace lumiset::test
