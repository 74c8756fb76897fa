#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "host/effect_library.h"
#include "hostkit/com_ptr.h"
#include "hostkit/dynamic_library.h"

namespace lumiset::hostkit {

/// The module cannot be found or used; the text is a whole sentence.
class ModuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The loaded effects module. Everything obtained from it must be released before it goes.
class Module {
public:
    /// Loads the module from `path`. Where that is empty the file named by the environment variable
    /// LUMISET_MODULE is loaded; where that is not set, `libvantrel_lumiset5.so` beside the running program,
    /// then in `../lib` from there. Throws `ModuleError`.
    explicit Module(const std::filesystem::path& path = {});
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    [[nodiscard]] IEffectLibrary& effectLibrary() const { return *m_library.get(); }
    /// Where the module was found.
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
    std::unique_ptr<DynamicLibrary> m_file;
    std::int32_t (*m_canUnload)() = nullptr;
    ComPtr<IEffectLibrary> m_library;
};

}  // namespace lumiset::hostkit
