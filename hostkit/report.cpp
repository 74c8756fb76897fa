#include "hostkit/report.h"

#include <cstdio>
#include <exception>
#include <mutex>
#include <set>

namespace lumiset::hostkit {

bool report(const std::string& sentence) noexcept {
    try {
        // Left to the end of the program, as everything that a thread may still be in.
        static std::mutex& mutex = *new std::mutex;
        static std::set<std::string>& said = *new std::set<std::string>;
        const std::lock_guard lock(mutex);
        if (!said.insert(sentence).second) {
            return false;
        }
        std::fprintf(stderr, "lumiset: %s\n", sentence.c_str());
        return true;
    } catch (const std::exception&) {
        return false;  // No memory to remember what was said: it stays unsaid.
    }
}

}  // namespace lumiset::hostkit
