#include "tests/pictures/result_file.h"

#include <cmath>
#include <cstring>

namespace lumiset::test {
namespace {

constexpr double kOneLevel = 1.0 / 255.0;

/// Effects, by the beginning of a result's name, whose 8-bit pictures pass through floating point, where the functions
/// of a 32-bit processor round differently. One sample in a hundred may then differ by a level.
constexpr const char* kComputedInFloats[] = {"Old TV", "Color Fixer Pro", "Selective Tint"};

bool mayDifferByALevel(const Rendering& result) {
    for (const char* name : kComputedInFloats) {
        if (sizeof(void*) == 4 && result.name.starts_with(name)) {
            return true;
        }
    }
    return false;
}

float floatAt(const std::vector<std::uint8_t>& bytes, std::size_t offset) {
    float value = 0.0F;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

}  // namespace

ResultFile::ResultFile(const char* path, bool write) : m_file(std::fopen(path, write ? "wb" : "rb")), m_writes(write) {
    if (m_file == nullptr) {
        std::printf("%s cannot be opened\n", path);
        ++m_failures;
    }
}

ResultFile::~ResultFile() {
    if (m_file != nullptr) {
        std::fclose(m_file);
    }
}

void ResultFile::take(const Rendering& result) {
    if (m_file == nullptr) {
        return;
    }
    ++m_results;
    if (m_writes) {
        write(result);
    } else {
        compare(result);
    }
}

void ResultFile::write(const Rendering& result) {
    const std::uint32_t sizes[2] = {static_cast<std::uint32_t>(result.name.size()),
                                    static_cast<std::uint32_t>(result.bytes.size())};
    if (std::fwrite(sizes, sizeof sizes, 1, m_file) != 1 ||
        std::fwrite(result.name.data(), 1, result.name.size(), m_file) != result.name.size() ||
        std::fwrite(result.bytes.data(), 1, result.bytes.size(), m_file) != result.bytes.size()) {
        fail(result, "cannot be written");
    }
}

Rendering ResultFile::read() {
    Rendering result{};
    std::uint32_t sizes[2];
    if (std::fread(sizes, sizeof sizes, 1, m_file) != 1) {
        return result;
    }
    result.name.resize(sizes[0]);
    result.bytes.resize(sizes[1]);
    if (std::fread(result.name.data(), 1, sizes[0], m_file) != sizes[0] ||
        std::fread(result.bytes.data(), 1, sizes[1], m_file) != sizes[1]) {
        return {};
    }
    return result;
}

void ResultFile::compare(const Rendering& result) {
    const Rendering expected = read();
    if (expected.name != result.name || expected.bytes.size() != result.bytes.size()) {
        fail(result, "the file has \"" + expected.name + "\" here");
        return;
    }
    const bool inFloats = mayDifferByALevel(result);
    std::size_t differing = 0;
    for (std::size_t i = 0; i < result.bytes.size(); i += result.isFloat ? sizeof(float) : 1) {
        double difference = 0.0;
        double limit = 0.0;
        if (result.isFloat) {
            difference = std::abs(double{floatAt(result.bytes, i)} - double{floatAt(expected.bytes, i)});
            limit = kOneLevel;
            m_largestFloatDifference = std::fmax(m_largestFloatDifference, difference);
        } else {
            difference = std::abs(int{result.bytes[i]} - int{expected.bytes[i]});
            limit = inFloats ? 1.0 : 0.0;
            differing += difference != 0.0 ? 1 : 0;
        }
        if (!(difference <= limit)) {
            fail(result, "byte " + std::to_string(i) + " differs by " + std::to_string(difference));
            return;
        }
    }
    m_differingBytes += differing;
    if (differing > result.bytes.size() / 100) {
        fail(result, std::to_string(differing) + " samples differ");
    }
}

void ResultFile::fail(const Rendering& result, const std::string& what) {
    ++m_failures;
    if (m_failures <= 20) {
        std::printf("%s: %s\n", result.name.c_str(), what.c_str());
    }
}

bool ResultFile::finish() {
    if (m_file != nullptr && !m_writes && !read().name.empty()) {
        std::printf("the file has more results\n");
        ++m_failures;
    }
    if (m_file != nullptr && m_writes && std::fflush(m_file) != 0) {
        ++m_failures;
    }
    if (m_writes) {
        std::printf("%d pictures written\n", m_results);
    } else {
        std::printf("%d pictures compared, %d differ; within the limits %zu 8-bit samples and floats by up to %g\n",
                    m_results, m_failures, m_differingBytes, m_largestFloatDifference);
    }
    return m_failures == 0 && m_results > 0;
}

}  // namespace lumiset::test
