#pragma once

#include <filesystem>
#include <vector>

namespace lumiset::hostkit {

/// A shared library of the system, open as long as the object lives.
class DynamicLibrary {
public:
    /// Throws std::runtime_error with the loader's own explanation.
    explicit DynamicLibrary(const std::filesystem::path& path);
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    /// Address of an exported function, or null.
    [[nodiscard]] void* symbol(const char* name) const;
    /// Leaves the library loaded when this object goes.
    void keepLoaded() { m_keepLoaded = true; }

private:
    void* m_handle = nullptr;
    bool m_keepLoaded = false;
};

/// Folder of the file that holds this code: the running program, or the shared library that the host kit is linked
/// into. Symbolic links are followed. Empty when the system does not tell.
std::filesystem::path codeDirectory();

/// The file that the code at this address was loaded from; empty when the system does not tell.
std::filesystem::path fileOfCode(const void* address);

/// From now on the plug-in that holds this code stays loaded: hosts close it while their threads may still be in it.
void keepThisCodeLoaded();

/// Folders of the libraries that are installed for all users, the machine's own first; none where programs bring
/// theirs.
std::vector<std::filesystem::path> systemLibraryDirectories();

/// File name that the system gives a shared library called `stem`.
std::filesystem::path dynamicLibraryName(const char* stem);

/// File name under which the system's loader finds OpenGL.
std::filesystem::path openGLLibraryName();

}  // namespace lumiset::hostkit
