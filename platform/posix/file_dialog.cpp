// There is no one toolkit; desktops bring a program that shows its own dialogs.

#include "platform/file_dialog.h"

#include <unistd.h>

#include "platform/posix/dialog_program.h"
#include "platform/text.h"

namespace lumiset::platform {
namespace {

DialogAnswer answerOf(int status, std::string& path) {
    if (status == 0 && !path.empty()) {
        return DialogAnswer::kChosen;
    }
    return status < 0 || status > 1 ? DialogAnswer::kUnavailable : DialogAnswer::kCancelled;
}

DialogAnswer ask(const FileDialog& dialog, bool save, std::string& path) {
    const std::string pattern = "*." + dialog.extension;
    std::vector<std::string> command = {"zenity", "--file-selection", std::string("--title=") + dialog.title,
                                        "--file-filter=" + dialog.filter + " | " + pattern};
    if (save) {
        command.insert(command.end(), {"--save", "--confirm-overwrite"});
    }
    if (!path.empty()) {
        command.push_back("--filename=" + path);
    }
    std::string chosen;
    DialogAnswer answer = answerOf(runDialogProgram(command, chosen), chosen);
    if (answer == DialogAnswer::kUnavailable) {
        command = {"kdialog",
                   "--title",
                   dialog.title,
                   save ? "--getsavefilename" : "--getopenfilename",
                   path.empty() ? "." : path,
                   dialog.filter};
        answer = answerOf(runDialogProgram(command, chosen), chosen);
    }
    path = chosen;
    return answer;
}

DialogAnswer widened(DialogAnswer answer, const std::string& name, std::wstring& path) {
    if (answer == DialogAnswer::kChosen) {
        const std::optional<std::wstring> wide = fromUtf8(name);
        if (!wide) {
            return DialogAnswer::kUnavailable;
        }
        path = *wide;
    }
    return answer;
}

}  // namespace

DialogAnswer askForFileToOpen(const FileDialog& dialog, std::wstring& path) {
    std::string name;
    const DialogAnswer answer = ask(dialog, false, name);
    return widened(answer, name, path);
}

DialogAnswer askForFileToSave(const FileDialog& dialog, std::wstring& path) {
    std::string name;
    DialogAnswer answer = ask(dialog, true, name);
    const std::size_t slash = name.rfind('/');
    if (answer == DialogAnswer::kChosen &&
        name.find('.', slash == std::string::npos ? 0 : slash + 1) == std::string::npos) {
        name += '.' + dialog.extension;
        // The program asked about the name without the extension; the user has to agree to this one as well.
        if (::access(name.c_str(), F_OK) == 0) {
            answer = ask(dialog, true, name);
        }
    }
    return widened(answer, name, path);
}

}  // namespace lumiset::platform
