#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace lumiset::platform {

/// How a program ended.
struct ChildEnd {
    int status = -1;     ///< exit status, where it ended by itself
    std::string crash;   ///< what ended it otherwise, as "Segmentation fault"; empty for an end by itself
    std::string output;  ///< what it wrote to standard output
    bool timedOut = false;
};

/// Runs a program with these arguments in UTF-8; what it writes to standard error is seen. It is ended after `limit`.
/// On Windows an argument must not have quotes in it. Throws `std::runtime_error` when it cannot be started.
ChildEnd runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    std::chrono::seconds limit);

/// Runs the program that calls this once more.
ChildEnd runThisProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit);

/// From now on a crash of this program ends it at once: nobody is asked, no debugger starts and no memory is dumped.
void crashQuietly();

}  // namespace lumiset::platform
