#pragma once

// The host's side of a render call: the object that the module reads parameters from and takes memory from.

#include <stdint.h>

enum { HOST_MAX_PARAMS = 64 };

typedef struct HostObject {
    const void* const* vtable;           // of the effect host
    const void* const* allocatorVtable;  // of the allocator, the same object's second interface
    const void* const* threadsVtable;    // of the threads, its third
    uint32_t threads;                    // that may render a frame; 0: the host offers none
    uint32_t runs;                       // pieces of work that the module cut for them
    int32_t references;
    int32_t blocks;                       // handed out and not yet given back
    int32_t blocksEver;                   // handed out
    uint32_t set[HOST_MAX_PARAMS];        // nonzero: the parameter has a value here
    uint32_t values[HOST_MAX_PARAMS][2];  // two words each
    uint32_t types[HOST_MAX_PARAMS];      // as the module asked for them
    uint32_t asked;                       // calls of GetParamValue
} HostObject;

void initHost(HostObject* host);
void setHostValue(HostObject* host, uint32_t param, uint32_t first, uint32_t second);
