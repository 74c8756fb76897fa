#include "platform/file_dialog.h"

#include <windows.h>

#include <commdlg.h>

#include "platform/text.h"

namespace lumiset::platform {
namespace {

DialogAnswer ask(const FileDialog& dialog, bool save, std::wstring& path) {
    const std::wstring title = fromUtf8(dialog.title).value_or(L"");
    const std::wstring extension = fromUtf8(dialog.extension).value_or(L"");
    std::wstring filter = fromUtf8(dialog.filter).value_or(L"");
    filter += L'\0';
    filter += L"*." + extension;
    filter += L'\0';  // the string ends with a second one

    std::wstring name(32768, L'\0');
    OPENFILENAMEW question{};
    question.lStructSize = sizeof question;
    question.hwndOwner = static_cast<HWND>(dialog.owner);
    question.lpstrFilter = filter.c_str();
    question.lpstrFile = name.data();
    question.nMaxFile = static_cast<DWORD>(name.size());
    question.lpstrTitle = title.c_str();
    question.lpstrDefExt = extension.c_str();
    question.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR |
                     (save ? OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST : OFN_FILEMUSTEXIST);
    if ((save ? GetSaveFileNameW(&question) : GetOpenFileNameW(&question)) == FALSE) {
        return CommDlgExtendedError() == 0 ? DialogAnswer::kCancelled : DialogAnswer::kUnavailable;
    }
    path = name.substr(0, name.find(L'\0'));
    return DialogAnswer::kChosen;
}

}  // namespace

DialogAnswer askForFileToOpen(const FileDialog& dialog, std::wstring& path) {
    return ask(dialog, false, path);
}

DialogAnswer askForFileToSave(const FileDialog& dialog, std::wstring& path) {
    return ask(dialog, true, path);
}

}  // namespace lumiset::platform
