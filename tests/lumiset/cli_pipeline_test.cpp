#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "render/ordered_pipeline.h"

namespace lumiset::app {
namespace {

struct Number {
    int value = 0;
};

/// Squares 0..count-1; step `failing` throws at the seventh.
std::vector<int> squares(int workers, int count, char failing = ' ') {
    std::vector<int> written;
    int next = 0;
    std::atomic<int> inMemory{0};
    std::atomic<int> most{0};
    const auto failAt = [failing](char step, int number) {
        if (step == failing && number == 7) {
            throw std::runtime_error(std::string(1, step));
        }
    };
    render::PipelineSteps<Number> steps;
    steps.read = [&](Number& job) {
        failAt('r', next);
        job.value = next++;
        if (job.value >= count) {
            return false;
        }
        most = std::max(most.load(), ++inMemory);
        return true;
    };
    steps.work = [&](Number& job, int worker) {
        EXPECT_LT(worker, workers);
        failAt('w', job.value);
        // The earlier of two jobs takes longer, so that a pipeline without order would show it.
        std::this_thread::sleep_for(std::chrono::microseconds(job.value % 2 == 0 ? 300 : 0));
        job.value *= job.value;
    };
    steps.write = [&](Number& job) {
        failAt('o', static_cast<int>(written.size()));
        written.push_back(job.value);
        --inMemory;
    };
    steps.tick = [] {};
    render::OrderedPipeline<Number>(workers, std::move(steps)).run();
    EXPECT_LE(most, workers + 4);
    return written;
}

TEST(OrderedPipeline, WritesInTheOrderOfReading) {
    for (const int workers : {1, 2, 5}) {
        for (const int count : {0, 1, 3, 100}) {
            const std::vector<int> written = squares(workers, count);
            ASSERT_EQ(written.size(), static_cast<std::size_t>(count));
            for (int i = 0; i < count; ++i) {
                EXPECT_EQ(written[static_cast<std::size_t>(i)], i * i);
            }
        }
    }
}

TEST(OrderedPipeline, EndsWithTheFailureOfAnyStep) {
    for (const char step : {'r', 'w', 'o'}) {
        try {
            squares(3, 50, step);
            ADD_FAILURE() << step << " failed unnoticed";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), std::string(1, step));
        }
    }
}

}  // namespace
}  // namespace lumiset::app
