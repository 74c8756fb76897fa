#include "apps/studio/core/frame_cache.h"

#include <algorithm>
#include <limits>

#include "platform/memory_size.h"

namespace lumiset::studio {

std::shared_ptr<const void> FrameCache::findAny(const FrameKey& key) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(key);
    if (found == m_entries.end()) {
        return nullptr;
    }
    m_order.splice(m_order.begin(), m_order, found->second);
    return found->second->picture;
}

void FrameCache::putAny(const FrameKey& key, std::shared_ptr<const void> picture, std::size_t bytes) {
    Order gone;  // freed behind the lock
    const std::lock_guard lock(m_mutex);
    const auto remove = [&](std::map<FrameKey, Order::iterator>::iterator entry) {
        m_bytes -= entry->second->bytes;
        gone.splice(gone.begin(), m_order, entry->second);
        m_entries.erase(entry);
    };
    if (const auto found = m_entries.find(key); found != m_entries.end()) {
        remove(found);
    }
    if (bytes > m_limit) {
        return;
    }
    while (m_bytes + bytes > m_limit) {
        remove(m_entries.find(m_order.back().key));
    }
    m_order.push_front({key, std::move(picture), bytes});
    m_entries.emplace(key, m_order.begin());
    m_bytes += bytes;
}

std::vector<std::int64_t> FrameCache::framesOf(const std::string& series) const {
    std::vector<std::int64_t> frames;
    const std::lock_guard lock(m_mutex);
    for (auto entry = m_entries.lower_bound({series, std::numeric_limits<std::int64_t>::min()});
         entry != m_entries.end() && entry->first.series == series; ++entry) {
        frames.push_back(entry->first.frame);
    }
    return frames;
}

std::size_t FrameCache::bytes() const {
    const std::lock_guard lock(m_mutex);
    return m_bytes;
}

void FrameCache::clear() {
    Order gone;
    const std::lock_guard lock(m_mutex);
    gone.swap(m_order);
    m_entries.clear();
    m_bytes = 0;
}

std::size_t cacheLimit() {
    return std::min(std::size_t{1} << 30, platform::memoryBytes() / 4);
}

}  // namespace lumiset::studio
