#pragma once

// glob() as POSIX has it, for Windows: for this program, and for the FFmpeg libraries built with it, which open image
// sequences by such patterns. Names are UTF-8. Backslashes separate folders and escape nothing, and the case of ASCII
// letters makes no difference, as in the file system.

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    size_t gl_pathc; /* number of names */
    char** gl_pathv; /* the names, sorted, and a null behind them */
} glob_t;

#define GLOB_NOCHECK 1 /* a pattern that matches nothing stands for itself */
#define GLOB_NOSPACE 1
#define GLOB_NOMATCH 3

/* The files that a pattern with "*", "?" and "[...]" stands for. Names with a dot in front are matched by a dot alone.
   Answers 0, GLOB_NOSPACE or GLOB_NOMATCH. `error` is not called: folders that cannot be read hold nothing. */
int glob(const char* pattern, int flags, int (*error)(const char* path, int reason), glob_t* found);

void globfree(glob_t* found);

#ifdef __cplusplus
}
#endif
