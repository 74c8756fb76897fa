#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace lumiset::fuzz {

inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A file in memory, under a path as every other.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(::memfd_create("fuzz", 0)) { require(m_descriptor >= 0); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(m_descriptor); }

    void write(std::string_view bytes) const {
        require(::ftruncate(m_descriptor, 0) == 0 && ::lseek(m_descriptor, 0, SEEK_SET) == 0 &&
                ::write(m_descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }
    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

}  // namespace lumiset::fuzz
