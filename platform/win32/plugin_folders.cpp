#include "platform/plugin_folders.h"

#include "platform/environment.h"
#include "platform/text.h"

namespace lumiset::platform {
namespace {

std::filesystem::path folderIn(const char* variable, const wchar_t* name) {
    const std::wstring parent = fromUtf8(environmentVariable(variable)).value_or(L"");
    return parent.empty() ? std::filesystem::path() : std::filesystem::path(parent) / name;
}

}  // namespace

const char* const kFrei0rExtension = ".dll";
const char* const kOpenFxArchitecture = "Win64";

std::vector<std::filesystem::path> frei0rFolders() {
    return {folderIn("ProgramFiles", L"Shotcut\\lib\\frei0r-1"), folderIn("ProgramFiles", L"kdenlive\\lib\\frei0r-1")};
}

std::filesystem::path openFxFolder() {
    return folderIn("CommonProgramFiles", L"OFX\\Plugins");
}

std::filesystem::path pythonFolder() {
    return {};
}

}  // namespace lumiset::platform
