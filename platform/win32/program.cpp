#include "platform/program.h"

// Needs what windows.h declares.
#include <windows.h>
//
#include <shellapi.h>

#include <memory>

#include "platform/text.h"

namespace lumiset::platform {
namespace {

constexpr DWORD kLongestPath = 32768;

struct FreeLocal {
    void operator()(wchar_t** words) const { LocalFree(words); }
};

}  // namespace

// What `main` is given went through the code page, which has not every letter.
std::vector<std::string> programArguments(int /*count*/, const char* const* /*words*/) {
    int count = 0;
    const std::unique_ptr<wchar_t*, FreeLocal> words(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        // Names of files may hold halves of pairs, which no text has. They stand for no file here.
        arguments.push_back(toUtf8(words.get()[i]).value_or("\xEF\xBF\xBD"));
    }
    return arguments;
}

std::filesystem::path thisProgram() {
    std::wstring path(kLongestPath, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), kLongestPath);
    path.resize(length < kLongestPath ? length : 0);
    return path;
}

std::filesystem::path findProgram(const std::string& name) {
    std::wstring path(kLongestPath, L'\0');
    const std::wstring wide = fromUtf8(name).value_or(L"");
    const DWORD length = SearchPathW(nullptr, wide.c_str(), L".exe", kLongestPath, path.data(), nullptr);
    path.resize(length < kLongestPath ? length : 0);
    return path;
}

}  // namespace lumiset::platform
