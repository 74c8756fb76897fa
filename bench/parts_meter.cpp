#include "bench/parts_meter.h"

#include <algorithm>
#include <ctime>
#include <numeric>

namespace lumiset::bench {

double processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double FrameParts::total() const {
    double sum = serial;
    for (const std::vector<double>& parts : pieces) {
        sum = std::accumulate(parts.begin(), parts.end(), sum);
    }
    return sum;
}

double FrameParts::onThreads(std::uint32_t threads) const {
    double sum = serial;
    for (const std::vector<double>& parts : pieces) {
        std::vector<double> busyUntil(threads, 0.0);
        for (const double part : parts) {
            *std::min_element(busyUntil.begin(), busyUntil.end()) += part;
        }
        sum += *std::max_element(busyUntil.begin(), busyUntil.end());
    }
    return sum;
}

void PartsMeter::start() {
    m_parts = {};
    m_last = processorTime();
}

FrameParts PartsMeter::stop() {
    m_parts.serial += processorTime() - m_last;
    return m_parts;
}

Result PartsMeter::QueryInterface(const Guid& iid, void** out) noexcept {
    return queryOneInterface<IHostParallel>(this, iid, out, kResultFail);
}

bool PartsMeter::Run(ParallelTask task, void* context, std::uint32_t count) noexcept {
    double last = processorTime();
    m_parts.serial += last - m_last;
    std::vector<double>& parts = m_parts.pieces.emplace_back();
    for (std::uint32_t i = 0; i < count; ++i) {
        task(context, i);
        const double now = processorTime();
        parts.push_back(now - last);
        last = now;
    }
    m_last = processorTime();
    return true;
}

}  // namespace lumiset::bench
