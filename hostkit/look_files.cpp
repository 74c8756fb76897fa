#include "hostkit/look_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

#include "hostkit/look_json.h"
#include "hostkit/names.h"
#include "hostkit/shipped_looks.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/pending_file.h"

namespace lumiset::hostkit {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxBytes = 1U << 20U;
constexpr const char* kExtension = ".lumilook";

std::string quoted(const fs::path& file) {
    return "The look \"" + file.string() + '"';
}

std::string readText(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) {
        throw LookError(quoted(file) + (fs::exists(file, error) ? " is not a file." : " is not there."));
    }
    std::ifstream stream(file, std::ios::binary);
    std::string text(kMaxBytes + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (stream.bad() || (stream.fail() && !stream.eof())) {
        throw LookError(quoted(file) + " cannot be read.");
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    if (text.size() > kMaxBytes) {
        throw LookError(quoted(file) + " is larger than a megabyte.");
    }
    return text;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char each) { return each >= 'A' && each <= 'Z' ? static_cast<char>(each - 'A' + 'a') : each; });
    return text;
}

bool isLookFile(const fs::path& file) {
    return lowered(file.extension().string()) == kExtension;
}

std::vector<fs::path> ownFiles() {
    std::vector<fs::path> files;
    std::error_code error;
    if (const fs::path folder = ownLooksFolder(); !folder.empty()) {
        files = platform::filesIn(folder, error);
    }
    std::erase_if(files, [](const fs::path& file) { return !isLookFile(file); });
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

fs::path ownLooksFolder() {
    const fs::path data = platform::userDataFolder();
    return data.empty() ? data : data / "lumiset" / "looks";
}

Look loadLook(const EffectCatalogue& catalogue, const fs::path& file) {
    const std::string text = readText(file);
    try {
        return lookFromJson(catalogue, text, file.stem().string());
    } catch (const LookError& error) {
        throw LookError(quoted(file) + " cannot be used. " + error.what());
    }
}

void saveLook(const EffectCatalogue& catalogue, const Look& look, const fs::path& file) {
    const std::string text = lookToJson(catalogue, look);
    static_cast<void>(lookFromJson(catalogue, text, {}));
    std::error_code error;
    const bool replaces = fs::exists(file, error);
    const auto mayWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    if (replaces &&
        (!fs::is_regular_file(file, error) || (fs::status(file, error).permissions() & mayWrite) == fs::perms::none)) {
        throw LookError(quoted(file) + " may not be written.");
    }
    try {
        platform::PendingFile pending(file);
        pending.write(text);
        pending.commit();
    } catch (const std::system_error& reason) {
        throw LookError(quoted(file) + " cannot be written: " + reason.what() + '.');
    }
}

std::vector<KnownLook> knownLooks(const EffectCatalogue& catalogue, std::vector<std::string>& faults) {
    std::vector<KnownLook> looks;
    for (const std::string_view text : shippedLooks()) {
        looks.push_back({lookFromJson(catalogue, std::string(text), {}), {}});
    }
    for (const fs::path& file : ownFiles()) {
        try {
            looks.push_back({loadLook(catalogue, file), file});
        } catch (const LookError& error) {
            faults.emplace_back(error.what());
        }
    }
    return looks;
}

KnownLook findLook(const EffectCatalogue& catalogue, const std::string& fileOrName) {
    if (isLookFile(fileOrName) || fs::path(fileOrName).has_parent_path()) {
        return {loadLook(catalogue, fileOrName), fileOrName};
    }
    std::vector<std::string> faults;
    std::vector<std::string> names;
    std::vector<KnownLook> looks = knownLooks(catalogue, faults);
    for (auto each = looks.rbegin(); each != looks.rend(); ++each) {
        if (equalIgnoringCase(each->look.name, trimmed(fileOrName))) {
            return std::move(*each);
        }
        names.insert(names.begin(), each->look.name);
    }
    const std::string hint = didYouMean(fileOrName, names);
    throw LookError("There is no look \"" + fileOrName + "\"." +
                    (hint.empty() ? " There is " + quotedList(names) + '.' : hint));
}

}  // namespace lumiset::hostkit
