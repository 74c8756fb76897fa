#include "adapters/openfx/host_threads.h"

#include <algorithm>
#include <atomic>

#include "host/reference_count.h"
#include "hostkit/thread_pool.h"

namespace lumiset::openfx {
namespace {

/// The parts of one `Run`. Whichever thread comes takes the next.
struct Parts {
    ParallelTask task;
    void* context;
    std::uint32_t count;
    std::atomic<std::uint32_t> next{0};

    void takeSome() {
        for (std::uint32_t i = next++; i < count; i = next++) {
            task(context, i);
        }
    }
};

void takeSome(unsigned /*index*/, unsigned /*threads*/, void* parts) {
    static_cast<Parts*>(parts)->takeSome();
}

class HostThreads final : public Counted<IHostParallel> {
public:
    HostThreads(const MultiThreadSuite& suite, std::uint32_t threads) : m_suite(suite), m_threads(threads) {}

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        return queryOneInterface<IHostParallel>(this, iid, out, kResultFail);
    }
    std::uint32_t LUMISET_CALL GetThreadCount() noexcept override { return m_threads; }

    /// Hosts refuse a call from within one of theirs, and some start fewer threads than they were asked for: what they
    /// leave is done here.
    bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept override {
        Parts parts{task, context, count};
        m_suite.multiThread(&openfx::takeSome, std::min(m_threads, count), &parts);
        parts.takeSome();
        return true;
    }

private:
    void lastReleased() noexcept override { delete this; }

    const MultiThreadSuite& m_suite;
    std::uint32_t m_threads;
};

}  // namespace

hostkit::ComPtr<IHostParallel> hostThreads(const HostInfo& host) {
    const MultiThreadSuite* const suite = host.multiThread;
    unsigned threads = 0;
    if (suite == nullptr || suite->multiThread == nullptr || suite->numCpus == nullptr ||
        suite->numCpus(&threads) != kOk) {
        return {};
    }
    return hostkit::ComPtr<IHostParallel>::adopt(
        new HostThreads(*suite, std::clamp(threads, 1U, hostkit::wantedThreads())));
}

}  // namespace lumiset::openfx
