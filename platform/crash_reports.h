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

/// False when it could not be stored.
bool storeCrashReport(const CrashReport& report);

/// All that stand. A value that somebody shortened counts from its end: the last name is the effect's.
std::vector<CrashReport> crashReports();

/// True when there is no such report afterwards.
bool removeCrashReport(const std::string& guid);

}  // namespace lumiset::platform
