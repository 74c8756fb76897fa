/* press_ctrl_c FOLDER PROGRAM [ARGUMENT]...: runs a program on a console, types Ctrl-C there when a file has appeared
   in the folder, and ends as the program does. */

#include <stdio.h>
#include <wchar.h>
#include <windows.h>

enum { kSeconds = 60 };

static BOOL WINAPI survive(DWORD event) {
    return event == CTRL_C_EVENT;
}

static BOOL has_file(const wchar_t* folder) {
    wchar_t pattern[1024];
    _snwprintf(pattern, 1024, L"%ls\\*", folder);
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW(pattern, &entry);
    BOOL found = FALSE;
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &entry)) {
        found = found || ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && entry.nFileSizeLow > 0);
    }
    FindClose(search);
    return found;
}

int wmain(int count, wchar_t** words) {
    wchar_t line[8192] = L"";
    for (int i = 2; i < count; ++i) {
        wcscat(wcscat(wcscat(line, L"\""), words[i]), L"\" ");
    }
    FreeConsole();
    if (!AllocConsole() || !SetConsoleCtrlHandler(survive, TRUE)) {
        fputs("no console\n", stderr);
        return 99;
    }
    STARTUPINFOW startup = {.cb = sizeof startup};
    PROCESS_INFORMATION started;
    if (!CreateProcessW(words[2], line, NULL, NULL, FALSE, 0, NULL, NULL, &startup, &started)) {
        fputs("the program does not start\n", stderr);
        return 98;
    }
    for (int i = 0; i < 100 * kSeconds && !has_file(words[1]); ++i) {
        Sleep(10);
    }
    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    if (WaitForSingleObject(started.hProcess, 1000 * kSeconds) != WAIT_OBJECT_0) {
        TerminateProcess(started.hProcess, 97);
    }
    DWORD status = 0;
    GetExitCodeProcess(started.hProcess, &status);
    return (int)status;
}
