#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace lumiset::media {

/// Objects that one thread at a time may use and that are dear to make: a thread borrows one and gives it back.
template <class T>
class Spares {
public:
    explicit Spares(std::function<T()> make) : m_make(std::move(make)) {}

    /// Given back when the pointer dies, which must not outlive this object.
    auto borrow() {
        std::unique_ptr<T> object;
        {
            const std::lock_guard lock(m_mutex);
            if (!m_idle.empty()) {
                object = std::move(m_idle.back());
                m_idle.pop_back();
            }
        }
        if (!object) {
            object = std::make_unique<T>(m_make());
        }
        const auto giveBack = [this](T* borrowed) {
            std::unique_ptr<T> owned(borrowed);
            const std::lock_guard lock(m_mutex);
            m_idle.push_back(std::move(owned));
        };
        return std::unique_ptr<T, decltype(giveBack)>(object.release(), giveBack);
    }

private:
    std::function<T()> m_make;
    std::mutex m_mutex;
    std::vector<std::unique_ptr<T>> m_idle;
};

}  // namespace lumiset::media
