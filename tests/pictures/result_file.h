#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace lumiset::test {

/// One rendered picture with everything around it.
struct Rendering {
    std::string name;
    bool isFloat;  ///< the bytes are float samples, else 8-bit samples
    std::vector<std::uint8_t> bytes;
};

/// A file of results in the order in which they are made: written by one build, compared by another. 8-bit results
/// must be the same byte for byte, unless their effect computes in floating point and the build is one of 32 bits: then
/// a few samples may differ by one level. So may float results.
class ResultFile {
public:
    ResultFile(const char* path, bool write);
    ~ResultFile();
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    void take(const Rendering& result);

    /// Prints what was done. False when a result differed, was missing or could not be written.
    [[nodiscard]] bool finish();

private:
    void write(const Rendering& result);
    void compare(const Rendering& result);
    /// The next result in the file; empty at its end.
    Rendering read();
    void fail(const Rendering& result, const std::string& what);

    std::FILE* m_file;
    bool m_writes;
    int m_results = 0;
    int m_failures = 0;
    std::size_t m_differingBytes = 0;  ///< of 8-bit results within their limit
    double m_largestFloatDifference = 0.0;
};

}  // namespace lumiset::test
