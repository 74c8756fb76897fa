#include "platform/file_identity.h"

#include <windows.h>

#include "platform/win32/handle.h"

namespace lumiset::platform {
namespace {

std::optional<FileIdentity> identityIn(HANDLE file) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (GetFileType(file) != FILE_TYPE_DISK || GetFileInformationByHandle(file, &information) == 0 ||
        (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    return FileIdentity{information.dwVolumeSerialNumber,
                        static_cast<std::uint64_t>(information.nFileIndexHigh) << 32U | information.nFileIndexLow};
}

}  // namespace

std::optional<FileIdentity> identityOf(const std::filesystem::path& file) {
    // Without any right, so that files which somebody keeps to himself are told apart, too.
    const Handle handle(CreateFileW(file.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return handle ? identityIn(handle.get()) : std::nullopt;
}

std::optional<FileIdentity> identityOfInput() {
    return identityIn(GetStdHandle(STD_INPUT_HANDLE));
}

}  // namespace lumiset::platform
