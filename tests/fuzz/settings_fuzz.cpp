// Whatever bytes the user's options file holds: it is read, an option is written into it, and all that stood there
// otherwise stays.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "platform/settings_store.h"
#include "support/option_store.h"
#include "tests/fuzz/memory_file.h"

namespace lumiset {
namespace {

using fuzz::require;

/// The file of the section "Common", in a folder in memory.
const std::string& optionsFile() {
    static const std::string s_file = [] {
        std::string folder = "/dev/shm/lumiset-fuzz-XXXXXX";
        require(::mkdtemp(folder.data()) != nullptr);
        require(::setenv("XDG_CONFIG_HOME", folder.c_str(), 1) == 0);
        std::filesystem::create_directory(folder + "/vantrel");
        static std::string s_folder = folder;
        std::atexit([] { std::filesystem::remove_all(s_folder); });
        return folder + "/vantrel/Common.ini";
    }();
    return s_file;
}

/// Of a name that stands twice the last counts.
std::map<std::string, std::string> settingsNow() {
    std::map<std::string, std::string> settings;
    for (auto& [name, value] : platform::readSettings("Common")) {
        settings[name] = value;
    }
    return settings;
}

}  // namespace
}  // namespace lumiset

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumiset;
    // The first half of the bytes is the file, the others are a name and a value.
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string name = bytes.substr(size / 2, size / 4);
    const std::string value = bytes.substr(size / 2 + size / 4);
    std::ofstream(optionsFile(), std::ios::binary | std::ios::trunc) << bytes.substr(0, size / 2);

    std::map<std::string, std::string> expected = settingsNow();
    require(writeOption(kCropOverscan, true));
    expected["Crop Overscan"] = "yes";
    require(settingsNow() == expected && readOptions()[kCropOverscan]);

    const bool storable =
        !name.empty() && name.find('\0') == std::string::npos && value.find('\0') == std::string::npos;
    require(platform::writeSetting("Common", name, value) == storable);
    if (storable) {
        expected[name] = value;
    }
    require(settingsNow() == expected);
    return 0;
}
