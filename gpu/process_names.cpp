#include "gpu/process_names.h"

#include <atomic>
#include <exception>
#include <string>

namespace lumiset {
namespace {

constexpr const char* kUnknown = "Unknown";

std::atomic<IEffectLibrary* (*)()> g_librarySource{nullptr};

std::string nameOrUnknown(const char* name) {
    return name != nullptr && name[0] != '\0' ? name : kUnknown;
}

std::string askHost(IEffectHost& host) {
    const char* name = nullptr;
    host.GetHostName(&name);
    return nameOrUnknown(name);
}

std::string askLibrary() {
    IEffectLibrary* (*const source)() = g_librarySource;
    IEffectLibrary* const library = source != nullptr ? source() : nullptr;
    std::string name = nameOrUnknown(library != nullptr ? library->GetLibraryName() : nullptr);
    if (library != nullptr) {
        library->Release();
    }
    return name;
}

}  // namespace

void setLibrarySource(IEffectLibrary* (*source)()) noexcept {
    g_librarySource = source;
}

const char* processHostName(IEffectHost& host) noexcept {
    try {
        static const std::string name = askHost(host);
        return name.c_str();
    } catch (const std::exception&) {
        return kUnknown;  // memory is exhausted
    }
}

const char* processLibraryName() noexcept {
    try {
        static const std::string name = askLibrary();
        return name.c_str();
    } catch (const std::exception&) {
        return kUnknown;
    }
}

}  // namespace lumiset
