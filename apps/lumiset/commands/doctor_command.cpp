#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <system_error>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/commands/doctor.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/user_options.h"
#include "hostkit/frame_buffer.h"
#include "hostkit/gl/gl_host.h"
#include "hostkit/look_files.h"
#include "platform/child_process.h"
#include "platform/crash_reports.h"
#include "platform/monitor_process.h"
#include "platform/program.h"

namespace lumiset::app {
namespace {

constexpr const char* kReinstall = "Install Lumiset again, or name the module with --module or LUMISET_MODULE.";

/// True when the effect renders a small grey picture.
bool renders(IEffectLibrary& library, const hostkit::EffectDescription& effect) {
    constexpr std::int32_t kSize = 32;
    const auto object = hostkit::ComPtr<IVideoGPUEffect>::adopt(library.CreateEffect(effect.index));
    hostkit::FrameBuffer source(kSize, kSize, kFormatBgra8);
    const hostkit::FrameBuffer destination(kSize, kSize, kFormatBgra8);
    for (std::int32_t y = 0; y < kSize; ++y) {
        std::fill_n(source.row(y), 4 * kSize, std::uint8_t{128});
    }
    FrameRenderInfo info{};
    info.field = FrameRenderInfo::kWholeFrame;
    return object && object->ProcessFrame(nullptr, &source.desc(), nullptr, &destination.desc(), &info);
}

Finding effectsFinding(Program& program) {
    const auto& effects = program.catalogue().effects();
    std::vector<std::string> failing;
    for (const hostkit::EffectDescription& effect : effects) {
        if (!renders(program.effectLibrary(), effect)) {
            failing.push_back(effect.name);
        }
    }
    if (effects.empty() || !failing.empty()) {
        return {"Effects", fmt::format("{}, of which do not render: {}", effects.size(), fmt::join(failing, ", ")),
                kReinstall, true};
    }
    return {"Effects", fmt::format("{}, all of which render", effects.size()), {}, false};
}

Finding monitorFinding(const std::filesystem::path& module) {
    const std::filesystem::path monitor =
        std::filesystem::weakly_canonical(module).parent_path() / platform::kMonitorProgram;
    if (!platform::isProgram(monitor.wstring())) {
        return {"Monitor", "not beside the module", "Install Lumiset again: crashes in OpenGL are not noticed."};
    }
    return {"Monitor", monitor.string() + (platform::isMonitorListed() ? ", running" : ", not running now")};
}

Finding glFinding() {
    try {
        const hostkit::GLHost gl([](const std::string&) {});
        return {"OpenGL", fmt::format("{}, version {}", gl.info().renderer, gl.info().version)};
    } catch (const hostkit::GLError& error) {
        return {"OpenGL", error.what(), fmt::format("{} --gpu needs it.", hostkit::kGLRemedy)};
    }
}

Finding optionsFinding(IEffectLibrary& library) {
    const auto services = servicesOf(library);
    std::vector<std::string> set;
    for (const UserOption& option : kUserOptions) {
        if ((services.get()->*option.get)()) {
            set.emplace_back(option.name);
        }
    }
    return {"Options", set.empty() ? "none is set" : fmt::format("{}", fmt::join(set, ", "))};
}

/// Effects that crashed in OpenGL stay off it.
Finding crashesFinding() {
    std::set<std::string> effects;
    try {
        for (const platform::CrashReport& report : platform::crashReports()) {
            effects.insert(printable(report.effect));
        }
    } catch (const std::system_error& error) {
        return {"Crashes", fmt::format("cannot be read: {}", error.what()),
                "All effects stay off OpenGL until \"lumiset gpu reset\" removes the reports."};
    }
    if (effects.empty()) {
        return {"Crashes", "none is reported"};
    }
    return {"Crashes", fmt::format("in OpenGL, of {}", fmt::join(effects, ", ")),
            "\"lumiset gpu reset\" lets these effects render in OpenGL again, once the driver is mended."};
}

bool hasFrei0rFilter(const std::filesystem::path& ffmpeg) {
    constexpr std::chrono::seconds kLimit{60};
    try {
        const platform::ChildEnd end =
            platform::runProgram(ffmpeg, {"-hide_banner", "-loglevel", "quiet", "-filters"}, kLimit);
        return end.output.find(" frei0r ") != std::string::npos;
    } catch (const std::runtime_error&) {
        return false;
    }
}

/// Files that cannot be used are left out by other commands, or told of in the middle of something else.
void addLooks(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue) {
    std::vector<std::string> faults;
    const std::vector<hostkit::KnownLook> looks = hostkit::knownLooks(catalogue, faults);
    const auto own = std::count_if(looks.begin(), looks.end(), [](const auto& look) { return !look.file.empty(); });
    const std::string folder = hostkit::ownLooksFolder().string();
    findings.push_back({"Looks", fmt::format("{} of ours, {} of one's own{}", static_cast<long>(looks.size()) - own,
                                             own, folder.empty() ? "" : " in " + printable(folder))});
    for (const std::string& fault : faults) {
        findings.push_back({"Looks", printable(fault), "Mend the file or remove it."});
    }
}

void addTools(std::vector<Finding>& findings) {
    for (const char* name : {"ffmpeg", "melt", "gst-launch-1.0", "sbatch", "parallel"}) {
        const std::filesystem::path path = platform::findProgram(name);
        if (path.empty()) {
            findings.push_back({name, "not installed", {}, false});
        } else if (std::string(name) == "ffmpeg" && !hasFrei0rFilter(path)) {
            findings.push_back({name, path.string() + ", without the frei0r filter",
                                "Use an ffmpeg built with frei0r to have the effects in it.", false});
        } else {
            findings.push_back({name, path.string(), {}, false});
        }
    }
}

/// Looks for everything that belongs to an installation. Changes nothing.
std::vector<Finding> examine(Program& program) {
    std::vector<Finding> findings;
    findings.push_back({"Program", platform::thisProgram().string() + ", version " LUMISET_VERSION});
    bool loaded = false;
    try {
        findings.push_back({"Module", program.module().path().string()});
        loaded = true;
        findings.push_back(effectsFinding(program));
    } catch (const std::exception& reason) {
        findings.push_back({loaded ? "Effects" : "Module", reason.what(), kReinstall, true});
    }
    if (loaded) {
        findings.push_back(optionsFinding(program.effectLibrary()));
        findings.push_back(monitorFinding(program.module().path()));
    }
    findings.push_back(glFinding());
    if (loaded) {
        findings.push_back(crashesFinding());
        addLooks(findings, program.catalogue());
        addFrei0rFolders(findings, program.catalogue());
        addOpenFxFolders(findings, program.catalogue());
    }
    addPythonFolder(findings);
    addTools(findings);
    return findings;
}

bool usable(const std::vector<Finding>& findings) {
    return std::none_of(findings.begin(), findings.end(), [](const Finding& each) { return each.fatal; });
}

std::string reportText(const std::vector<Finding>& findings) {
    std::string text;
    for (const Finding& each : findings) {
        text += fmt::format("{:<16}{}\n", each.name, each.found);
        if (!each.remedy.empty()) {
            text += fmt::format("{:<16}! {}\n", "", each.remedy);
        }
    }
    return text + (usable(findings) ? "\nEffects can be rendered.\n" : "\nEffects cannot be rendered.\n");
}

std::string reportJson(const std::vector<Finding>& findings) {
    nlohmann::ordered_json json{{"usable", usable(findings)}, {"findings", nlohmann::ordered_json::array()}};
    for (const Finding& each : findings) {
        json["findings"].push_back({{"name", each.name}, {"found", each.found}, {"remedy", each.remedy}});
    }
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

}  // namespace

void addDoctorCommand(CLI::App& app, Program& program) {
    CLI::App& command =
        addCommand(app, "doctor", "Tells what of an installation is there",
                   "Tells what of an installation is there, and what to do about what is not.\n\n"
                   "Looks for the module, its monitor, OpenGL, one's own looks, the folders of frei0r and OpenFX "
                   "plug-ins, the Python package, programs that use frei0r "
                   "and those that run films in parts.\nThe exit status is 0 when effects can be rendered.\n");
    const auto json = std::make_shared<bool>(false);
    command.add_flag("--json", *json, "as JSON");
    program.onChosen(command, [json, &program] {
        const std::vector<Finding> findings = examine(program);
        printText(*json ? reportJson(findings) : reportText(findings));
        return usable(findings) ? kDone : kFailed;
    });
}

}  // namespace lumiset::app
