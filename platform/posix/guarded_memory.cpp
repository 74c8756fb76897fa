#include "platform/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace lumiset::platform {
namespace {

std::size_t pageSize() {
    return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, bool atEnd) : m_size(bytes) {
    const std::size_t page = pageSize();
    m_pageBytes = (bytes + page - 1) / page * page;
    void* const block = ::mmap(nullptr, m_pageBytes + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) {
        throw std::bad_alloc();
    }
    m_pages = static_cast<std::uint8_t*>(block) + page;
    if (::mprotect(m_pages, m_pageBytes, PROT_READ | PROT_WRITE) != 0) {
        ::munmap(block, m_pageBytes + 2 * page);
        throw std::bad_alloc();
    }
    m_data = atEnd ? m_pages + m_pageBytes - bytes : m_pages;
}

GuardedMemory::~GuardedMemory() {
    const std::size_t page = pageSize();
    ::munmap(m_pages - page, m_pageBytes + 2 * page);
}

void GuardedMemory::setReadOnly(bool readOnly) {
    ::mprotect(m_pages, m_pageBytes, readOnly ? PROT_READ : PROT_READ | PROT_WRITE);
}

}  // namespace lumiset::platform
