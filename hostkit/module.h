#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "host/effect_library.h"
#include "hostkit/com_ptr.h"

namespace lumiset::hostkit {

class DynamicLibrary;

/// The module cannot be found or used; the text is a whole sentence.
class ModuleError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The file that the environment variable LUMISET_MODULE names. Where it is not set, `libvantrel_lumiset5.so`
/// (`vantrel_lumiset5.dll` on Windows) in the first of these that has it: `home`, `..` from there, `../lib/lumiset`,
/// `../lib`, `../lumiset`. These are the places where programs and plug-ins find it, in the build folder and installed.
/// Throws `ModuleError`.
[[nodiscard]] std::filesystem::path findModule(const std::filesystem::path& home);

/// The loaded effects module. Everything obtained from it must be released before it goes. Any number of threads may
/// use it at once.
class Module {
public:
    /// Loads the module from `path`; where that is empty, the one that `findModule` finds from the folder of the
    /// program or shared library that holds this code, or else the one that is installed for all users of the machine,
    /// in /usr/local/lib/lumiset or /usr/lib/lumiset, on Windows in Lumiset among the programs. Throws `ModuleError`.
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
