#pragma once

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace lumiset::app {

/// The command line cannot be understood; the text is a whole sentence.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ListRequest {
    bool json = false;
};

struct ShowRequest {
    std::string effect;
    bool json = false;
};

/// One `--effect` with the options behind it.
struct EffectRequest {
    struct Setting {
        std::string label;
        std::string value;
    };
    struct Key {
        std::string label;
        double timeSeconds;
        std::string value;
    };
    std::string name;
    std::string preset;      ///< empty: none
    std::string presetFile;  ///< empty: none
    std::vector<Setting> settings;
    std::vector<Key> keys;
};

struct GPUInfoRequest {};

struct PresetSaveRequest {
    std::string file;
    EffectRequest effect;
};

struct PresetLoadRequest {
    std::string file;
};

struct PresetCheckRequest {
    std::vector<std::string> files;
};

struct OptionsRequest {
    std::string name;  ///< empty: all are listed
    std::string value;
};

struct RenderRequest {
    std::string input;
    std::string output;
    std::vector<EffectRequest> effects;
    bool floatDepth = false;
    bool argb = false;
    int threads = 0;  ///< 0: one a core
    double startSeconds = 0.0;
    double durationSeconds = std::numeric_limits<double>::infinity();
    std::string codec;  ///< empty: the usual one for the extension
    int quality = -1;   ///< -1: the encoder's usual one
    struct Rate {
        int num = 0;
        int den = 1;
    };
    Rate frameRate;      ///< pictures a second of an input image sequence; 0: the usual rate
    bool alpha = false;  ///< the output has transparency whatever the first picture is like
    bool gpu = false;    ///< in OpenGL where that is possible
    bool quiet = false;
};

/// A text that was asked for, such as the help.
struct TextRequest {
    std::string text;
};

struct CommandLine {
    std::string modulePath;  ///< empty: found by the host kit
    std::variant<TextRequest, ListRequest, ShowRequest, GPUInfoRequest, RenderRequest, PresetSaveRequest,
                 PresetLoadRequest, PresetCheckRequest, OptionsRequest>
        request;
};

/// Reads the program's arguments. Throws `UsageError`.
[[nodiscard]] CommandLine parseCommandLine(int argc, const char* const* argv);

}  // namespace lumiset::app
