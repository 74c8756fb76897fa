#include "hostkit/module.h"

#include <string>
#include <system_error>

#include "hostkit/dynamic_library.h"
#include "platform/environment.h"

namespace lumiset::hostkit {

std::filesystem::path findModule(const std::filesystem::path& home) {
    if (std::filesystem::path named = platform::pathVariable("LUMISET_MODULE"); !named.empty()) {
        return named;
    }
    const std::filesystem::path name = dynamicLibraryName("vantrel_lumiset5");
    for (const char* folder : {".", "..", "../lib/lumiset", "../lib", "../lumiset"}) {
        std::filesystem::path place = (home / folder / name).lexically_normal();
        std::error_code error;
        if (std::filesystem::exists(place, error)) {
            return place;
        }
    }
    throw ModuleError("The effects module " + name.string() + " was found neither in " + home.string() +
                      " nor in the folders beside it; set LUMISET_MODULE to its path.");
}

namespace {

std::filesystem::path findAnyModule() {
    try {
        return findModule(codeDirectory());
    } catch (const ModuleError&) {
        std::error_code error;
        for (const std::filesystem::path& folder : systemLibraryDirectories()) {
            std::filesystem::path place = folder / "lumiset" / dynamicLibraryName("vantrel_lumiset5");
            if (std::filesystem::exists(place, error)) {
                return place;
            }
        }
        throw;
    }
}

}  // namespace

Module::Module(const std::filesystem::path& path) : m_path(path.empty() ? findAnyModule() : path) {
    std::error_code error;
    if (!std::filesystem::exists(m_path, error)) {
        throw ModuleError("There is no effects module at " + m_path.string() + ".");
    }
    try {
        // An absolute path keeps the loader from searching the system's library folders for a bare name.
        m_file = std::make_unique<DynamicLibrary>(std::filesystem::absolute(m_path));
    } catch (const std::runtime_error& reason) {
        throw ModuleError("The effects module cannot be loaded: " + std::string(reason.what()) + ".");
    }
    const auto getLibrary = reinterpret_cast<IEffectLibrary* (*)()>(m_file->symbol("GetEffectsLibrary"));
    m_canUnload = reinterpret_cast<std::int32_t (*)()>(m_file->symbol("CanUnloadDLLNow"));
    if (getLibrary == nullptr || m_canUnload == nullptr) {
        throw ModuleError(m_path.string() + " is not an effects module: it does not export " +
                          (getLibrary == nullptr ? "GetEffectsLibrary" : "CanUnloadDLLNow") + ".");
    }
    m_library = ComPtr<IEffectLibrary>::adopt(getLibrary());
    if (!m_library) {
        throw ModuleError("The effects module " + m_path.string() + " does not hand out its library.");
    }
}

Module::~Module() {
    m_library = {};
    if (m_canUnload() != 1) {
        m_file->keepLoaded();
    }
}

}  // namespace lumiset::hostkit
