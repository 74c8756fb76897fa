#include "adapters/frei0r/hosts/command_lines.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "hostkit/names.h"

namespace lumiset::frei0r {
namespace {

/// One word for the shell, in quotes where it needs them.
std::string word(const std::string& text) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=:,./%@";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + '\'';
}

/// A file's name where programs take one beginning with a dash for an option.
std::string fileName(const std::string& name) {
    return name.starts_with('-') ? "./" + name : name;
}

/// Files whose usual codec is H.264, which few players show with unhalved colour. ffmpeg would choose that, as the
/// plug-ins have four samples a pixel.
bool isHalvedVideo(const std::string& output) {
    constexpr auto kExtensions = std::to_array<std::string_view>({".mp4", ".m4v", ".mov", ".mkv"});
    const std::string extension = std::filesystem::path(output).extension().string();
    return std::any_of(kExtensions.begin(), kExtensions.end(),
                       [&](std::string_view each) { return hostkit::equalIgnoringCase(each, extension); });
}

/// ffmpeg takes values by position, so those before the last that differs have to be there.
std::string ffmpegParameters(const Settings& settings) {
    std::size_t count = settings.parameters.size();
    while (count > 0 && !settings.differs(count - 1)) {
        --count;
    }
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        const bool isSwitch = settings.parameters[i].type == kFrei0rBool;
        text += i > 0 ? "|" : "";
        text += isSwitch ? (settings.text(i) == "1" ? "y" : "n") : settings.text(i);
    }
    return text;
}

}  // namespace

std::string ffmpegCommand(const std::vector<Settings>& chain, const std::string& input, const std::string& output) {
    std::string filters;
    for (const Settings& settings : chain) {
        filters +=
            (filters.empty() ? "frei0r=filter_name=" : ",frei0r=filter_name=") + pluginName(settings.effect->name);
        const std::string parameters = ffmpegParameters(settings);
        if (!parameters.empty()) {
            filters += ":filter_params=" + parameters;
        }
    }
    return "ffmpeg -i " + word(fileName(input)) + " -vf " + word(filters) +
           (isHalvedVideo(output) ? " -pix_fmt yuv420p " : " ") + word(fileName(output));
}

std::string meltCommand(const std::vector<Settings>& chain, const std::string& input, const std::string& output) {
    std::string command = "melt " + word(fileName(input));
    for (const Settings& settings : chain) {
        command += " -filter frei0r." + pluginName(settings.effect->name);
        for (std::size_t i = 0; i < settings.parameters.size(); ++i) {
            if (settings.differs(i)) {
                // A colon in a name means something else to melt, so such a parameter goes by its number.
                const std::string& name = settings.parameters[i].name;
                const bool numbered = name.find(':') != std::string::npos;
                command += ' ' + word((numbered ? std::to_string(i) : name) + '=' + settings.text(i));
            }
        }
    }
    return command + " -consumer " + word("avformat:" + output);
}

}  // namespace lumiset::frei0r
