#include "glob.h"

#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

static bool is_separator(wchar_t c) {
    return c == L'/' || c == L'\\' || c == L':';
}

static wchar_t lowered(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? (wchar_t)(c - L'A' + L'a') : c;
}

/* The end of the set "[...]" that `set` begins, or null where no bracket closes it. A bracket right at its beginning is
   one of its characters. */
static const wchar_t* end_of_set(const wchar_t* set) {
    const wchar_t* at = set + 1;
    at += *at == L'!' || *at == L'^';
    at += *at == L']';
    at += wcscspn(at, L"]");
    return *at == L']' ? at : NULL;
}

static bool set_has(const wchar_t* set, const wchar_t* end, wchar_t c) {
    const bool inverted = set[1] == L'!' || set[1] == L'^';
    bool found = false;
    for (const wchar_t* at = set + 1 + inverted; at < end; ++at) {
        wchar_t last = *at;
        const wchar_t first = lowered(*at);
        if (at + 2 < end && at[1] == L'-') {
            last = at[2];
            at += 2;
        }
        found = found || (first <= lowered(c) && lowered(c) <= lowered(last));
    }
    return found != inverted;
}

/* Goes back to the latest star alone, so that the time is at most the product of both lengths. */
static bool matches(const wchar_t* pattern, const wchar_t* name) {
    if (*name == L'.' && *pattern != L'.') {
        return false;
    }
    const wchar_t* star = NULL;
    const wchar_t* behind = NULL; /* of the name, what the latest star does not cover */
    while (*name != L'\0') {
        const wchar_t* end = *pattern == L'[' ? end_of_set(pattern) : NULL;
        if (*pattern == L'*') {
            star = pattern++;
            behind = name;
        } else if (end != NULL ? set_has(pattern, end, *name)
                               : *pattern == L'?' || lowered(*pattern) == lowered(*name)) {
            pattern = end != NULL ? end + 1 : pattern + 1;
            ++name;
        } else if (star != NULL) {
            pattern = star + 1;
            name = ++behind;
        } else {
            return false;
        }
    }
    return pattern[wcsspn(pattern, L"*")] == L'\0';
}

/* Takes over the name, which may be null for want of memory. */
static bool add(glob_t* found, char* name) {
    char** names = name != NULL ? realloc(found->gl_pathv, (found->gl_pathc + 2) * sizeof *names) : NULL;
    if (names == NULL) {
        free(name);
        return false;
    }
    names[found->gl_pathc++] = name;
    names[found->gl_pathc] = NULL;
    found->gl_pathv = names;
    return true;
}

static char* in_utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, NULL, 0, NULL, NULL);
    char* bytes = malloc((size_t)size + 1);
    if (bytes != NULL) {
        WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, size, NULL, NULL);
    }
    return bytes;
}

static wchar_t* joined(const wchar_t* folder, size_t length, const wchar_t* name, size_t name_length,
                       const wchar_t* rest) {
    wchar_t* path = malloc((length + name_length + wcslen(rest) + 1) * sizeof *path);
    if (path != NULL) {
        wmemcpy(path, folder, length);
        wmemcpy(path + length, name, name_length);
        wcscpy(path + length + name_length, rest);
    }
    return path;
}

/* Adds what `path` stands for, of which the first `done` characters are a folder without wildcards. */
static bool expand(const wchar_t* path, size_t done, glob_t* found) {
    size_t begin = done;
    size_t end = done;
    bool wild = false;
    for (size_t i = done; path[i] != L'\0' && !(wild && is_separator(path[i])); ++i) {
        wild = wild || wcschr(L"*?[", path[i]) != NULL;
        begin = !wild && is_separator(path[i]) ? i + 1 : begin;
        end = i + 1;
    }
    if (!wild) {
        return GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES || add(found, in_utf8(path));
    }
    wchar_t* all = joined(path, begin, L"*", 1, L"");
    wchar_t* pattern = joined(path + begin, end - begin, L"", 0, L"");
    bool ok = all != NULL && pattern != NULL;
    WIN32_FIND_DATAW entry;
    HANDLE search = ok ? FindFirstFileW(all, &entry) : INVALID_HANDLE_VALUE;
    for (BOOL more = search != INVALID_HANDLE_VALUE; ok && more; more = FindNextFileW(search, &entry)) {
        const wchar_t* name = entry.cFileName;
        if (matches(pattern, name)) {
            wchar_t* next = joined(path, begin, name, wcslen(name), path + end);
            ok = next != NULL && expand(next, begin + wcslen(name), found);
            free(next);
        }
    }
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
    }
    free(pattern);
    free(all);
    return ok;
}

static int compare(const void* a, const void* b) {
    return strcmp(*(char* const*)a, *(char* const*)b);
}

int glob(const char* pattern, int flags, int (*error)(const char* path, int reason), glob_t* found) {
    (void)error;
    found->gl_pathc = 0;
    found->gl_pathv = NULL;
    const int size = MultiByteToWideChar(CP_UTF8, 0, pattern, -1, NULL, 0);
    wchar_t* path = malloc(((size_t)size + 1) * sizeof *path);
    bool ok = path != NULL;
    if (ok) {
        path[0] = L'\0';
        MultiByteToWideChar(CP_UTF8, 0, pattern, -1, path, size);
        ok = expand(path, 0, found);
    }
    free(path);
    if (ok && found->gl_pathc == 0 && (flags & GLOB_NOCHECK) != 0) {
        ok = add(found, strdup(pattern));
    }
    if (!ok) {
        globfree(found);
        return GLOB_NOSPACE;
    }
    if (found->gl_pathc == 0) {
        return GLOB_NOMATCH;
    }
    qsort(found->gl_pathv, found->gl_pathc, sizeof *found->gl_pathv, compare);
    return 0;
}

void globfree(glob_t* found) {
    for (size_t i = 0; i < found->gl_pathc; ++i) {
        free(found->gl_pathv[i]);
    }
    free(found->gl_pathv);
    found->gl_pathc = 0;
    found->gl_pathv = NULL;
}
