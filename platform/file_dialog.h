#pragma once

#include <string>

namespace lumiset::platform {

/// A question for a file's name.
struct FileDialog {
    void* owner;            ///< the parent window
    const char* title;      ///< UTF-8
    std::string filter;     ///< what the files are called, with their pattern: "Texts (*.txt)"
    std::string extension;  ///< without the dot; added to a name to save under that has none
};

enum class DialogAnswer {
    kChosen,
    kCancelled,
    kUnavailable,  ///< nothing here can show such a dialog
};

/// Asks for an existing file. Waits for the answer.
DialogAnswer askForFileToOpen(const FileDialog& dialog, std::wstring& path);

/// Asks for a name to save under; has the user confirm that a file of that name is replaced.
DialogAnswer askForFileToSave(const FileDialog& dialog, std::wstring& path);

}  // namespace lumiset::platform
