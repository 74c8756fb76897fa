#pragma once

// A real OpenGL host for tests. Where there is none they are skipped, and say so.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "hostkit/gl/gpu_renderer.h"

namespace lumiset::test {

class WithGL : public ::testing::Test {
protected:
    void SetUp() override {
        try {
            m_host =
                std::make_unique<hostkit::GLHost>([this](const std::string& message) { m_reports += message + '\n'; });
        } catch (const hostkit::GLError& error) {
            GTEST_SKIP() << "No OpenGL here, nothing is tested: " << error.what();
        }
    }
    void TearDown() override {
        if (m_host != nullptr) {
            EXPECT_TRUE(m_host->checkErrors("testing"));
            EXPECT_EQ(m_host->liveObjects(), 0);
            EXPECT_EQ(m_reports, "");
        }
    }

    [[nodiscard]] hostkit::GLHost& gl() { return *m_host; }

    std::string m_reports;

private:
    std::unique_ptr<hostkit::GLHost> m_host;
};

}  // namespace lumiset::test
