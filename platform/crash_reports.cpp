#include "platform/crash_reports.h"

#include "platform/settings_store.h"
#include "platform/text.h"

namespace lumiset::platform {
namespace {

constexpr const char* kSection = "Common\\Monitoring\\Reports";

/// Hosts name themselves in whatever encoding they use; settings are UTF-8.
std::string asUtf8(std::string text) {
    if (!fromUtf8(text)) {
        for (char& character : text) {
            if (static_cast<unsigned char>(character) >= 0x80) {
                character = '?';
            }
        }
    }
    return text;
}

/// Takes the last of the names off `text`.
std::string lastName(std::string& text) {
    const std::size_t separator = text.rfind(';');
    std::string name = text.substr(separator == std::string::npos ? 0 : separator + 1);
    text.erase(separator == std::string::npos ? 0 : separator);
    return name;
}

}  // namespace

bool storeCrashReports(const std::vector<CrashReport>& reports) {
    const std::size_t standing = readSettings(kSection).size();
    Settings settings;
    for (const CrashReport& report : reports) {
        if (standing + settings.size() < kMostCrashReports) {
            settings.emplace_back(report.guid, asUtf8(report.host + ';' + report.effectLibrary + ';' + report.effect));
        }
    }
    return settings.empty() || writeSettings(kSection, settings);
}

bool storeCrashReport(const CrashReport& report) {
    return storeCrashReports({report});
}

std::vector<CrashReport> crashReports() {
    std::vector<CrashReport> reports;
    for (auto& [name, text] : readSettings(kSection)) {
        CrashReport report;
        report.guid = name;
        report.effect = lastName(text);
        report.effectLibrary = lastName(text);
        report.host = text;
        reports.push_back(std::move(report));
    }
    return reports;
}

bool removeCrashReports() {
    return removeSettings(kSection);
}

std::string crashReportsProblem() {
    return storingProblem(kSection);
}

}  // namespace lumiset::platform
