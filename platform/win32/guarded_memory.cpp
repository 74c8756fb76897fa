#include "platform/guarded_memory.h"

#include <windows.h>

#include <new>

namespace lumiset::platform {
namespace {

std::size_t pageSize() {
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return info.dwPageSize;
}

}  // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, bool atEnd) : m_size(bytes) {
    const std::size_t page = pageSize();
    m_pageBytes = (bytes + page - 1) / page * page;
    void* const block = ::VirtualAlloc(nullptr, m_pageBytes + 2 * page, MEM_RESERVE, PAGE_NOACCESS);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    m_pages = static_cast<std::uint8_t*>(block) + page;
    if (::VirtualAlloc(m_pages, m_pageBytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        ::VirtualFree(block, 0, MEM_RELEASE);
        throw std::bad_alloc();
    }
    m_data = atEnd ? m_pages + m_pageBytes - bytes : m_pages;
}

GuardedMemory::~GuardedMemory() {
    ::VirtualFree(m_pages - pageSize(), 0, MEM_RELEASE);
}

void GuardedMemory::setReadOnly(bool readOnly) {
    DWORD before = 0;
    ::VirtualProtect(m_pages, m_pageBytes, readOnly ? PAGE_READONLY : PAGE_READWRITE, &before);
}

}  // namespace lumiset::platform
