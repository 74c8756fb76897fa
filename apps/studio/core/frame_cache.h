#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace lumiset::studio {

/// Which frame it is, of what.
struct FrameKey {
    std::string series;  ///< everything that frames of one rendering share: clip, look, size, renderer
    std::int64_t frame = 0;

    auto operator<=>(const FrameKey&) const = default;
};

/// Keeps pictures up to a number of bytes; what was longest unused goes first. Any thread may use it.
class FrameCache {
public:
    explicit FrameCache(std::size_t limitBytes) : m_limit(limitBytes) {}

    /// Null where there is none. `Picture` is what was put there.
    template <class Picture>
    [[nodiscard]] std::shared_ptr<const Picture> find(const FrameKey& key) {
        return std::static_pointer_cast<const Picture>(findAny(key));
    }
    /// A picture larger than the limit is not kept.
    template <class Picture>
    void put(const FrameKey& key, std::shared_ptr<const Picture> picture, std::size_t bytes) {
        putAny(key, std::move(picture), bytes);
    }

    /// The frames of a series that are there, in order.
    [[nodiscard]] std::vector<std::int64_t> framesOf(const std::string& series) const;
    [[nodiscard]] std::size_t bytes() const;
    void clear();

private:
    struct Entry {
        FrameKey key;
        std::shared_ptr<const void> picture;
        std::size_t bytes;
    };
    using Order = std::list<Entry>;  // the last used first

    [[nodiscard]] std::shared_ptr<const void> findAny(const FrameKey& key);
    void putAny(const FrameKey& key, std::shared_ptr<const void> picture, std::size_t bytes);

    mutable std::mutex m_mutex;
    std::size_t m_limit;
    std::size_t m_bytes = 0;
    Order m_order;
    std::map<FrameKey, Order::iterator> m_entries;
};

/// What all pictures that are kept may take: a quarter of the machine's memory, at most 1 GiB.
[[nodiscard]] std::size_t cacheLimit();

}  // namespace lumiset::studio
