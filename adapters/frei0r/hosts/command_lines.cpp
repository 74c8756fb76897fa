#include "adapters/frei0r/hosts/command_lines.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <initializer_list>
#include <string_view>

#include "hostkit/names.h"
#include "hostkit/parameter_text.h"

namespace lumiset::frei0r {
namespace {

using hostkit::shellWord;

bool hasExtension(const std::string& name, std::initializer_list<std::string_view> extensions) {
    const std::string extension = std::filesystem::path(name).extension().string();
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](std::string_view each) { return hostkit::equalIgnoringCase(each, extension); });
}

/// A file's name for ffmpeg, which takes one beginning with a dash for an option and what stands before a colon for a
/// protocol.
std::string ffmpegName(const std::string& name) {
    return name.find(':') != std::string::npos ? "file:" + name : name.starts_with('-') ? "./" + name : name;
}

/// The same for melt, which cannot be told that a "=" or a ":" belongs to the name.
std::string meltName(const std::string& name) {
    if (name.find_first_of("=:") != std::string::npos) {
        throw NameError("melt takes the \"=\" or \":\" in \"" + name + "\" for something else; rename the file.");
    }
    return name.starts_with('-') ? "./" + name : name;
}

struct Matrix {
    int number;               ///< in ITU-T H.273
    std::string_view scaler;  ///< what the filter "scale" calls it
    std::string_view tag;     ///< what the option "-colorspace" does
};

constexpr auto kMatrices = std::to_array<Matrix>({{1, "bt709", "bt709"},
                                                  {4, "fcc", "fcc"},
                                                  {5, "bt470", "bt470bg"},
                                                  {6, "smpte170m", "smpte170m"},
                                                  {7, "smpte240m", "smpte240m"},
                                                  {9, "bt2020", "bt2020nc"}});

const Matrix& matrixOf(const Clip& clip) {
    const auto found = std::find_if(kMatrices.begin(), kMatrices.end(),
                                    [&](const Matrix& each) { return each.number == clip.matrix; });
    return found != kMatrices.end() ? *found : kMatrices.front();
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

/// Columns that fill rows up to a multiple of 64 bytes: ffmpeg 5.1 does that without telling plug-ins.
int missingColumns(const Clip& clip) {
    constexpr int kColumns = 16;
    return (kColumns - clip.width % kColumns) % kColumns;
}

/// The filters around the plug-ins: colours converted as the video is coded, fields apart, and whole rows.
std::string ffmpegFilters(const std::string& plugins, const Clip& clip, const std::string& format) {
    if (clip.width == 0) {
        return plugins;
    }
    const std::string matrix(matrixOf(clip).scaler);
    const std::string scaling = std::string(clip.fields != hostkit::FieldOrder::kProgressive ? ":interl=1" : "") +
                                ":flags=accurate_rnd+full_chroma_int+full_chroma_inp";
    const int missing = missingColumns(clip);
    std::string filters = "scale=in_color_matrix=" + matrix + scaling + ",format=bgra,";
    if (missing > 0) {
        filters += "pad=" + std::to_string(clip.width + missing) + ":0," + plugins +
                   ",crop=" + std::to_string(clip.width) + ":" + std::to_string(clip.height) + ":0:0";
    } else {
        filters += plugins;
    }
    // What has no alpha takes the colours over black.
    const bool keepsAlpha = format.find('a') != std::string::npos ||
                            hasExtension(clip.output, {".png", ".tif", ".tiff", ".webp", ".bmp", ".mkv"});
    if (clip.alpha && !keepsAlpha) {
        filters += ",premultiply=inplace=1";
    }
    return format.empty() ? filters : filters + ",scale=out_color_matrix=" + matrix + scaling + ",format=" + format;
}

/// The samples to write, where ffmpeg would choose some that few players can show; empty where it does not.
std::string ffmpegFormat(const Clip& clip) {
    if (clip.alpha && hasExtension(clip.output, {".mov"})) {
        return "yuva444p10le";
    }
    if (clip.alpha && hasExtension(clip.output, {".webm"})) {
        return "yuva420p";
    }
    const bool whole = clip.width % 2 != 0 || clip.height % 2 != 0;
    return clip.alpha && hasExtension(clip.output, {".mkv"})                      ? ""
           : hasExtension(clip.output, {".mp4", ".m4v", ".mov", ".mkv", ".webm"}) ? (whole ? "yuv444p" : "yuv420p")
                                                                                  : "";
}

std::string ffmpegEncoding(const Clip& clip, const std::string& format) {
    std::string options;
    if (clip.alpha && hasExtension(clip.output, {".mov"})) {
        options += " -c:v prores_ks -profile:v 4444";
    } else if (clip.alpha && hasExtension(clip.output, {".mkv"})) {
        options += " -c:v ffv1";
    } else if (clip.alpha && hasExtension(clip.output, {".webm"})) {
        options += " -auto-alt-ref 0";
    }
    if (!format.empty() && clip.width > 0) {
        options += " -colorspace " + std::string(matrixOf(clip).tag);
    } else if (!format.empty()) {
        options += " -pix_fmt " + format;
    }
    return options + (clip.fields != hostkit::FieldOrder::kProgressive ? " -flags +ilme+ildct" : "");
}

/// Settings with what only the pictures tell; `padded` where rows are filled up.
Settings fitted(Settings settings, const Clip& clip, bool padded) {
    for (std::size_t i = 0; clip.width > 0 && i < settings.parameters.size(); ++i) {
        if (settings.parameters[i].role == Role::kPixelAspect) {
            settings.values[i].number = numberOfPixelAspect(clip.pixelAspect);
        } else if (settings.parameters[i].role == Role::kFields) {
            settings.values[i].number = numberOfFieldOrder(clip.fields);
        } else if (settings.parameters[i].role == Role::kPadding && padded) {
            settings.values[i].number = numberOfPadding(static_cast<std::uint32_t>(missingColumns(clip)));
        }
    }
    return settings;
}

}  // namespace

std::string ffmpegCommand(const std::vector<Settings>& chain, const Clip& clip) {
    std::string plugins;
    for (const Settings& settings : chain) {
        plugins +=
            (plugins.empty() ? "frei0r=filter_name=" : ",frei0r=filter_name=") + pluginName(settings.effect->name);
        const std::string parameters = ffmpegParameters(fitted(settings, clip, true));
        if (!parameters.empty()) {
            plugins += ":filter_params=" + parameters;
        }
    }
    std::string input;
    if (clip.sequenceRate > 0.0) {
        const bool numbered = clip.input.find('%') != std::string::npos;
        input = " -framerate " + hostkit::formatNumber(clip.sequenceRate, 6) +
                (numbered ? " -start_number " + std::to_string(clip.firstNumber) : " -pattern_type glob");
    }
    const std::string format = ffmpegFormat(clip);
    return "ffmpeg" + input + " -i " + shellWord(ffmpegName(clip.input)) + " -vf " +
           shellWord(ffmpegFilters(plugins, clip, format)) + ffmpegEncoding(clip, format) + ' ' +
           shellWord(ffmpegName(clip.output));
}

std::string meltCommand(const std::vector<Settings>& chain, const Clip& clip) {
    std::string command = "melt " + shellWord(meltName(clip.input));
    for (const Settings& settings : chain) {
        const Settings fit = fitted(settings, clip, false);
        command += " -filter frei0r." + pluginName(fit.effect->name);
        for (std::size_t i = 0; i < fit.parameters.size(); ++i) {
            if (fit.differs(i)) {
                // A colon in a name means something else to melt, so such a parameter goes by its number.
                const std::string& name = fit.parameters[i].name;
                const bool numbered = name.find(':') != std::string::npos;
                command += ' ' + shellWord((numbered ? std::to_string(i) : name) + '=' + fit.text(i));
            }
        }
    }
    return command + " -consumer " + shellWord("avformat:" + meltName(clip.output));
}

}  // namespace lumiset::frei0r
