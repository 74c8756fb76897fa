#pragma once

// What the module asks of the host. The host implements these; every call comes on the thread that called
// the module, and no pointer handed out here is kept after that call returns.

#include <cstdint>

#include "host/records.h"

namespace lumiset {

/// The object that a host passes with every render call. It may answer `QueryInterface` for `IHostAllocator` and
/// `IHostParallel` and, for rendering in OpenGL, for `IHostGL`.
class IEffectHost : public IUnknown {
public:
    /// Fills `out` with the parameter's value at the current time. `type` is the `ParamType` that the effect
    /// expects. `out` holds the default on entry; leave it alone for a parameter without a value.
    virtual void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept = 0;
    // Four slots that the module never calls.
    virtual void LUMISET_CALL Reserved4() noexcept = 0;
    virtual void LUMISET_CALL Reserved5() noexcept = 0;
    virtual void LUMISET_CALL Reserved6() noexcept = 0;
    virtual void LUMISET_CALL Reserved7() noexcept = 0;
    /// Stores the host's name, an 8-bit text that lives as long as the host object.
    virtual void LUMISET_CALL GetHostName(const char** out) noexcept = 0;

protected:
    ~IEffectHost() = default;
};

/// Optional: where a host offers it, scratch memory comes from the host. Calls may come from several render
/// threads at once.
class IHostAllocator : public IUnknown {
public:
    static constexpr Guid kId{0x9F635B81, 0x506A, 0x4DEE, {0x9D, 0xC7, 0x9E, 0x0B, 0xAB, 0xA2, 0xD5, 0xA2}};

    /// Stores a block of `size` bytes, aligned to 32 bytes, or null.
    virtual void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept = 0;
    virtual void LUMISET_CALL FreeBytes(void* block) noexcept = 0;
    /// Stores a block for an image and the bytes from row to row. Returns nonzero on success.
    virtual std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                                 std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept = 0;
    virtual void LUMISET_CALL FreeImage(void* block) noexcept = 0;

protected:
    ~IHostAllocator() = default;
};

/// One part of a piece of work. It does not throw, ask the host for memory or call `IHostParallel::Run`.
using ParallelTask = void(LUMISET_CALL*)(void* context, std::uint32_t index);

/// Optional: where a host offers it, one frame is rendered by several of the host's threads. Asked for once a frame,
/// and released when the frame is done. Calls may come from several render threads at once.
class IHostParallel : public IUnknown {
public:
    static constexpr Guid kId{0x6C1B5D0E, 0x93A4, 0x4E27, {0x8F, 0x5B, 0x2D, 0x7A, 0x41, 0xE0, 0xC9, 0xB3}};

    /// Threads that may work on one `Run`, the caller's among them; at least 1.
    virtual std::uint32_t LUMISET_CALL GetThreadCount() noexcept = 0;
    /// Calls `task(context, i)` for every i below `count`, once each and in any order, on any threads, the caller's
    /// among them, and returns when all calls have ended. False when it called none.
    virtual bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept = 0;

protected:
    ~IHostParallel() = default;
};

}  // namespace lumiset
