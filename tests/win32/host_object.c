#include "host_object.h"

#include <malloc.h>
#include <stddef.h>
#include <string.h>

#include "call.h"
#include "contract.h"

#define METHOD_OF_HOST __attribute__((stdcall))

static HostObject* ofAllocator(void* allocator) {
    return (HostObject*)((char*)allocator - offsetof(HostObject, allocatorVtable));
}

METHOD_OF_HOST static uint32_t addRef(HostObject* host) {
    return (uint32_t)++host->references;
}

METHOD_OF_HOST static uint32_t release(HostObject* host) {
    return (uint32_t)--host->references;
}

METHOD_OF_HOST static uint32_t queryInterface(HostObject* host, const uint8_t* id, void** out) {
    *out = NULL;
    if (memcmp(id, ID_UNKNOWN, sizeof(Identifier)) == 0) {
        *out = host;
    } else if (memcmp(id, ID_HOST_ALLOCATOR, sizeof(Identifier)) == 0) {
        *out = &host->allocatorVtable;
    } else if (memcmp(id, ID_HOST_PARALLEL, sizeof(Identifier)) == 0 && host->threads != 0) {
        *out = &host->threadsVtable;
    } else {
        return NO_INTERFACE;
    }
    addRef(host);
    return 0;
}

METHOD_OF_HOST static void getParamValue(HostObject* host, uint32_t index, uint32_t* out, uint32_t type) {
    CHECK(index < HOST_MAX_PARAMS);
    if (index < HOST_MAX_PARAMS) {
        ++host->asked;
        host->types[index] = type;
        if (host->set[index]) {
            memcpy(out, host->values[index], sizeof host->values[index]);
        }
    }
}

METHOD_OF_HOST static void neverCalled(HostObject* host) {
    (void)host;
    CHECK(!"a reserved slot is called");
}

METHOD_OF_HOST static void getHostName(HostObject* host, const char** out) {
    (void)host;
    *out = "Contract host";
}

METHOD_OF_HOST static uint32_t queryAllocator(void* allocator, const uint8_t* id, void** out) {
    return queryInterface(ofAllocator(allocator), id, out);
}

METHOD_OF_HOST static uint32_t addRefAllocator(void* allocator) {
    return addRef(ofAllocator(allocator));
}

METHOD_OF_HOST static uint32_t releaseAllocator(void* allocator) {
    return release(ofAllocator(allocator));
}

static void* takeBlock(void* allocator, size_t size) {
    void* block = _aligned_malloc(size, 32);
    memset(block, 0xA5, size);
    ++ofAllocator(allocator)->blocks;
    ++ofAllocator(allocator)->blocksEver;
    return block;
}

METHOD_OF_HOST static void allocBytes(void* allocator, void** out, uint32_t size) {
    *out = takeBlock(allocator, size);
}

METHOD_OF_HOST static void freeBlock(void* allocator, void* block) {
    if (block != NULL) {
        --ofAllocator(allocator)->blocks;
        _aligned_free(block);
    }
}

METHOD_OF_HOST static uint32_t allocImage(void* allocator, void** out, int32_t width, int32_t height,
                                          int32_t bytesPerPixel, int32_t* stride) {
    *stride = (width * bytesPerPixel + 31) / 32 * 32;
    *out = takeBlock(allocator, (size_t)*stride * (size_t)height);
    return 0xFFFFFF01;  // the answer is the lowest byte; a compiler leaves anything in the others
}

static HostObject* ofThreads(void* threads) {
    return (HostObject*)((char*)threads - offsetof(HostObject, threadsVtable));
}

METHOD_OF_HOST static uint32_t queryThreads(void* threads, const uint8_t* id, void** out) {
    return queryInterface(ofThreads(threads), id, out);
}

METHOD_OF_HOST static uint32_t addRefThreads(void* threads) {
    return addRef(ofThreads(threads));
}

METHOD_OF_HOST static uint32_t releaseThreads(void* threads) {
    return release(ofThreads(threads));
}

METHOD_OF_HOST static uint32_t getThreadCount(void* threads) {
    return ofThreads(threads)->threads;
}

typedef void(METHOD_OF_HOST* Task)(void* context, uint32_t index);

// Backwards: no part may wait for another.
METHOD_OF_HOST static uint32_t run(void* threads, Task task, void* context, uint32_t count) {
    ++ofThreads(threads)->runs;
    while (count-- > 0) {
        task(context, count);
    }
    return 0xFFFFFF01;
}

static const void* const hostVtable[] = {queryInterface, addRef,      release,     getParamValue, neverCalled,
                                         neverCalled,    neverCalled, neverCalled, getHostName};
static const void* const allocatorVtable[] = {queryAllocator, addRefAllocator, releaseAllocator, allocBytes,
                                              freeBlock,      allocImage,      freeBlock};

static const void* const threadsVtable[] = {queryThreads, addRefThreads, releaseThreads, getThreadCount, run};

void initHost(HostObject* host) {
    memset(host, 0, sizeof *host);
    host->vtable = hostVtable;
    host->allocatorVtable = allocatorVtable;
    host->threadsVtable = threadsVtable;
    host->references = 1;
}

void setHostValue(HostObject* host, uint32_t param, uint32_t first, uint32_t second) {
    host->set[param] = 1;
    host->values[param][0] = first;
    host->values[param][1] = second;
}
