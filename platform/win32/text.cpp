#include "platform/text.h"

#include <windows.h>

namespace lumiset::platform {
namespace {

std::optional<std::string> narrowed(std::wstring_view text, UINT codePage, DWORD flags) {
    if (text.empty()) {
        return std::string();
    }
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, flags, text.data(), length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, flags, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

std::optional<std::wstring> widened(std::string_view text, UINT codePage) {
    if (text.empty()) {
        return std::wstring();
    }
    const int length = static_cast<int>(text.size());
    const int size = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (size <= 0) {
        return std::nullopt;
    }
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), size);
    return wide;
}

}  // namespace

std::optional<std::string> toSystemText(std::wstring_view text) {
    std::optional<std::string> bytes = narrowed(text, CP_ACP, 0);
    if (!bytes || widened(*bytes, CP_ACP) != text) {
        return std::nullopt;
    }
    return bytes;
}

std::optional<std::string> toUtf8(std::wstring_view text) {
    return narrowed(text, CP_UTF8, WC_ERR_INVALID_CHARS);
}

std::optional<std::wstring> fromUtf8(std::string_view text) {
    return widened(text, CP_UTF8);
}

}  // namespace lumiset::platform
