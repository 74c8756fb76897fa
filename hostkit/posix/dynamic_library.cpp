#include "hostkit/dynamic_library.h"

#include <dlfcn.h>
#include <link.h>

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

std::filesystem::path codeDirectory() {
    Dl_info info{};
    void* found = nullptr;
    std::filesystem::path file;
    if (::dladdr1(reinterpret_cast<const void*>(&codeDirectory), &info, &found, RTLD_DL_LINKMAP) != 0) {
        file = static_cast<const link_map*>(found)->l_name;
    }
    // The loader keeps no name for the program itself.
    std::error_code error;
    file = std::filesystem::canonical(file.empty() ? "/proc/self/exe" : file, error);
    return error ? std::filesystem::path() : file.parent_path();
}

std::filesystem::path fileOfCode(const void* address) {
    Dl_info info{};
    return ::dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

void keepThisCodeLoaded() {}  // plug-ins are linked to stay

std::vector<std::filesystem::path> systemLibraryDirectories() {
    return {"/usr/local/lib", "/usr/lib"};
}

std::filesystem::path dynamicLibraryName(const char* stem) {
    return "lib" + std::string(stem) + ".so";
}

std::filesystem::path openGLLibraryName() {
    return "libGL.so.1";
}

}  // namespace lumiset::hostkit
