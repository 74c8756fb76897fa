#include "hostkit/dynamic_library.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <system_error>

namespace lumiset::hostkit {

DynamicLibrary::DynamicLibrary(const std::filesystem::path& path) {
    m_handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_handle == nullptr) {
        const char* reason = ::dlerror();
        throw std::runtime_error(reason != nullptr ? reason : "unknown loader error");
    }
}

DynamicLibrary::~DynamicLibrary() {
    if (!m_keepLoaded) {
        ::dlclose(m_handle);
    }
}

void* DynamicLibrary::symbol(const char* name) const {
    return ::dlsym(m_handle, name);
}

std::filesystem::path executableDirectory() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : program.parent_path();
}

std::filesystem::path dynamicLibraryName(const char* stem) {
    return "lib" + std::string(stem) + ".so";
}

}  // namespace lumiset::hostkit
