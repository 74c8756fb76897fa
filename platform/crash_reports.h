#pragma once

#include <string>
#include <vector>

// What is left of frames that a crash ended, among the user's settings in the section Common\Monitoring\Reports: a
// value each, named by the frame's GUID, with the text "host;library;effect".

namespace lumiset::platform {

struct CrashReport {
    std::string guid;
    std::string host;  ///< the only one of the three names that may hold a ";"
    std::string effectLibrary;
    std::string effect;
};

/// No more are kept: one for an effect is enough to keep it off OpenGL.
inline constexpr std::size_t kMostCrashReports = 256;

/// False when they could not be stored. Beyond the most that are kept they count as stored.
bool storeCrashReports(const std::vector<CrashReport>& reports);
bool storeCrashReport(const CrashReport& report);

/// All that stand. A value that somebody shortened counts from its end: the last name is the effect's. Throws
/// std::system_error where there are some that cannot be read.
std::vector<CrashReport> crashReports();

/// True when there is none afterwards. They need not be readable.
bool removeCrashReports();

/// Why reports cannot be stored or removed, for people. Empty when they can.
std::string crashReportsProblem();

}  // namespace lumiset::platform
