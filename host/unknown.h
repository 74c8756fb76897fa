#pragma once

#include <cstdint>

#include "host/platform_call.h"

namespace lumiset {

struct Guid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::uint8_t data4[8];

    friend constexpr bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

/// Status of QueryInterface, the only operation that returns one.
using Result = std::int32_t;
inline constexpr Result kResultOk = 0;
inline constexpr Result kResultNoInterface = static_cast<Result>(0x80004002U);
inline constexpr Result kResultFail = static_cast<Result>(0x80004005U);

/// The reference-counted root of every interface. Objects are born with one reference. The methods may be
/// called from any thread. No interface has a C++ virtual destructor: it would add vtable slots.
class IUnknown {
public:
    static constexpr Guid kId{0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// On success stores the interface in `*out`, adds a reference and returns `kResultOk`. Otherwise stores
    /// null and returns `kResultNoInterface`.
    virtual Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept = 0;
    /// Returns the new count.
    virtual std::uint32_t LUMISET_CALL AddRef() noexcept = 0;
    /// Returns the remaining count; at 0 the object is gone.
    virtual std::uint32_t LUMISET_CALL Release() noexcept = 0;

protected:
    ~IUnknown() = default;
};

}  // namespace lumiset
