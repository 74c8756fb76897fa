#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "apps/lumiset/validate/effect.h"
#include "apps/lumiset/validate/picture.h"

namespace lumiset::app::validate {

/// A host that hands out values, lends memory that may run out, and notes what an effect should not have done.
class Host final : public IEffectHost, public IHostAllocator {
public:
    static constexpr int kNever = -1;

    Host(const Effect& effect, std::vector<ParamValue> values) : m_effect(effect), m_values(std::move(values)) {}
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    bool lends = false;         ///< answers for the allocator
    int failAt = kNever;        ///< allocation, counted from 0, that fails
    bool failsOn = false;       ///< and all that follow it
    std::uint8_t fresh = 0xA5;  ///< what new memory holds
    int allocations = 0;        ///< that were asked for
    /// What the effect did that no host expects, or left undone: empty for nothing.
    [[nodiscard]] std::string misuse() const;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    std::uint32_t LUMISET_CALL AddRef() noexcept override;
    std::uint32_t LUMISET_CALL Release() noexcept override;
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept override;
    void LUMISET_CALL Reserved4() noexcept override { note("It calls a reserved slot of the host."); }
    void LUMISET_CALL Reserved5() noexcept override { Reserved4(); }
    void LUMISET_CALL Reserved6() noexcept override { Reserved4(); }
    void LUMISET_CALL Reserved7() noexcept override { Reserved4(); }
    void LUMISET_CALL GetHostName(const char** out) noexcept override { *out = "lumiset validate"; }
    void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept override { *out = allocate(size); }
    void LUMISET_CALL FreeBytes(void* block) noexcept override { release(block); }
    std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept override;
    void LUMISET_CALL FreeImage(void* block) noexcept override { release(block); }

private:
    void* allocate(std::size_t size);
    void release(void* block);
    void note(const char* what) noexcept;

    const Effect& m_effect;
    std::vector<ParamValue> m_values;
    mutable std::mutex m_mutex;
    std::unordered_set<void*> m_blocks;
    int m_references = 1;
    const char* m_misuse = nullptr;
};

/// A whole frame with square pixels.
[[nodiscard]] FrameRenderInfo wholeFrame(double timeSeconds = 0.0);

/// Renders and answers what the effect answered. Throws `Broken` where it misuses the host.
bool render(const Effect& effect, Host& host, const Picture& source, const Picture& destination,
            const FrameRenderInfo* info);
/// The same with values alone; throws `Broken` when the effect refuses.
void renderWell(const Effect& effect, const std::vector<ParamValue>& values, const Picture& source,
                const Picture& destination, const FrameRenderInfo& info = wholeFrame(1.25));

/// Which preset, size and format a finding is about: "Old TV, Snow, 3 by 5, format 0".
[[nodiscard]] std::string where(const Effect& effect, std::uint32_t preset, const Picture& picture);

}  // namespace lumiset::app::validate
