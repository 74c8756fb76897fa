/* path_entry add|remove FOLDER: the folder's entry in the PATH of all users. The installer's own language cuts texts at
   1024 characters, which a PATH may well exceed. Ends with 0 when the PATH is as asked for. */

#include <windows.h>
/* It needs the one above. */
#include <shellapi.h>
#include <stdbool.h>
#include <stdlib.h>
#include <wchar.h>

static const wchar_t kKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
static const wchar_t kName[] = L"Path";
enum { kMostCharacters = 32766 }; /* of a variable */

/* The value with room for `more` characters, or null. */
static wchar_t* read_path(HKEY key, size_t more, DWORD* type) {
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, kName, NULL, type, NULL, &size);
    if (status == ERROR_FILE_NOT_FOUND) {
        *type = REG_EXPAND_SZ;
        return calloc(more + 1, sizeof(wchar_t));
    }
    if (status != ERROR_SUCCESS || (*type != REG_SZ && *type != REG_EXPAND_SZ)) {
        return NULL;
    }
    wchar_t* path = calloc(size / sizeof(wchar_t) + more + 1, sizeof(wchar_t));
    if (path != NULL && RegQueryValueExW(key, kName, NULL, type, (BYTE*)path, &size) != ERROR_SUCCESS) {
        free(path);
        return NULL;
    }
    return path;
}

/* The folder's entry in the list, or null; `length` without the separator behind it. */
static wchar_t* find_entry(wchar_t* path, const wchar_t* folder) {
    const size_t length = wcslen(folder);
    for (wchar_t* entry = path; *entry != L'\0';) {
        const size_t size = wcscspn(entry, L";");
        if (size == length && _wcsnicmp(entry, folder, length) == 0) {
            return entry;
        }
        entry += size + (entry[size] == L';');
    }
    return NULL;
}

static bool add_entry(wchar_t* path, const wchar_t* folder) {
    const size_t length = wcslen(path);
    if (length + wcslen(folder) + 1 > kMostCharacters) {
        return false;
    }
    if (length > 0 && path[length - 1] != L';') {
        wcscat(path, L";");
    }
    wcscat(path, folder);
    return true;
}

static void remove_entry(wchar_t* path, wchar_t* entry, size_t length) {
    if (entry[length] == L';') {
        ++length;
    } else if (entry > path) { /* the last one takes the separator before it along */
        --entry;
        ++length;
    }
    wmemmove(entry, entry + length, wcslen(entry + length) + 1);
}

static bool change(HKEY key, bool add, const wchar_t* folder) {
    DWORD type = 0;
    wchar_t* path = read_path(key, wcslen(folder) + 1, &type);
    if (path == NULL) {
        return false;
    }
    wchar_t* entry = find_entry(path, folder);
    bool ok = true;
    if (add != (entry != NULL)) {
        if (add) {
            ok = add_entry(path, folder);
        } else {
            remove_entry(path, entry, wcslen(folder));
        }
        const DWORD size = (DWORD)((wcslen(path) + 1) * sizeof(wchar_t));
        ok = ok && RegSetValueExW(key, kName, 0, type, (const BYTE*)path, size) == ERROR_SUCCESS;
    }
    free(path);
    return ok;
}

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE former, wchar_t* line, int show) {
    (void)instance, (void)former, (void)line, (void)show;
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == NULL || count != 3 || (wcscmp(words[1], L"add") != 0 && wcscmp(words[1], L"remove") != 0)) {
        return 2;
    }
    HKEY key = NULL;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_QUERY_VALUE | KEY_SET_VALUE, &key) != ERROR_SUCCESS) {
        return 1;
    }
    const bool ok = change(key, wcscmp(words[1], L"add") == 0, words[2]);
    RegCloseKey(key);
    if (ok) { /* programs that start others read it again */
        SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, (LPARAM)L"Environment", SMTO_ABORTIFHUNG, 5000, NULL);
    }
    return ok ? 0 : 1;
}
