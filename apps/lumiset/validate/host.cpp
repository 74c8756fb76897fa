#include "apps/lumiset/validate/host.h"

#include <fmt/format.h>

#include <cstring>
#include <new>

#include "apps/lumiset/validate/check.h"

namespace lumiset::app::validate {
namespace {

constexpr std::align_val_t kAlignment{32};  // what the host promises

}  // namespace

Host::~Host() {
    for (void* block : m_blocks) {
        ::operator delete(block, kAlignment);
    }
}

void Host::note(const char* what) noexcept {
    const std::lock_guard lock(m_mutex);
    m_misuse = what;
}

std::string Host::misuse() const {
    const std::lock_guard lock(m_mutex);
    if (m_misuse != nullptr) {
        return m_misuse;
    }
    if (!m_blocks.empty()) {
        return "It keeps memory of the host's.";
    }
    return m_references != 1 ? "It keeps a reference to the host, or gives back one too many." : "";
}

Result Host::QueryInterface(const Guid& iid, void** out) noexcept {
    *out = lends && iid == IHostAllocator::kId ? static_cast<IHostAllocator*>(this) : nullptr;
    return *out != nullptr ? (AddRef(), kResultOk) : kResultNoInterface;
}

std::uint32_t Host::AddRef() noexcept {
    const std::lock_guard lock(m_mutex);
    return static_cast<std::uint32_t>(++m_references);
}

std::uint32_t Host::Release() noexcept {
    const std::lock_guard lock(m_mutex);
    return static_cast<std::uint32_t>(--m_references);
}

void Host::GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept {
    if (index >= m_values.size() || !hasValue(m_effect.params[index])) {
        note("It asks for the value of a parameter that has none.");
    } else if (type != m_effect.params[index].type) {
        note("It asks for a parameter's value by another type than it describes.");
    } else {
        *out = m_values[index];
    }
}

std::uint8_t Host::AllocImage(void** out, std::int32_t width, std::int32_t height, std::int32_t bytesPerPixel,
                              std::int32_t* strideOut) noexcept {
    *strideOut = (width * bytesPerPixel + 31) / 32 * 32 + 32;
    *out = allocate(static_cast<std::size_t>(*strideOut) * static_cast<std::size_t>(height));
    return *out != nullptr ? 1 : 0;
}

void* Host::allocate(std::size_t size) {
    const std::lock_guard lock(m_mutex);
    const int number = allocations++;
    if (failAt != kNever && (number == failAt || (failsOn && number > failAt))) {
        return nullptr;
    }
    void* const block = ::operator new(size, kAlignment);
    std::memset(block, fresh, size);
    m_blocks.insert(block);
    return block;
}

void Host::release(void* block) {
    const std::lock_guard lock(m_mutex);
    if (block == nullptr) {
        return;
    }
    if (m_blocks.erase(block) == 0) {
        m_misuse = "It gives back memory that the host has not lent.";
        return;
    }
    ::operator delete(block, kAlignment);
}

FrameRenderInfo wholeFrame(double timeSeconds) {
    FrameRenderInfo info{};
    info.timeSeconds = timeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    return info;
}

bool render(const Effect& effect, Host& host, const Picture& source, const Picture& destination,
            const FrameRenderInfo* info) {
    const VideoFrameDesc from = source.desc();
    const VideoFrameDesc to = destination.desc();
    const bool done = effect.object->ProcessFrame(&host, &from, nullptr, &to, info);
    if (const std::string misuse = host.misuse(); !misuse.empty()) {
        throw Broken(effect.name + ": " + misuse);
    }
    return done;
}

void renderWell(const Effect& effect, const std::vector<ParamValue>& values, const Picture& source,
                const Picture& destination, const FrameRenderInfo& info) {
    Host host(effect, values);
    if (!render(effect, host, source, destination, &info)) {
        throw Broken(fmt::format("{}: a frame of {} by {} is refused.", effect.name, source.width(), source.height()));
    }
}

std::string where(const Effect& effect, std::uint32_t preset, const Picture& picture) {
    const char* const name = effect.object->GetPresetName(preset);
    return fmt::format("{}, {}, {} by {}, format {}", effect.name, name != nullptr ? name : "no preset",
                       picture.width(), picture.height(), picture.desc().format);
}

}  // namespace lumiset::app::validate
