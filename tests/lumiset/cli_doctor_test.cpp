#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "platform/crash_reports.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

using Json = nlohmann::json;

struct Examination {
    int status;
    Json report;

    /// What was found under `name`, of several the first whose text holds `part`.
    [[nodiscard]] Json finding(const std::string& name, const std::string& part = {}) const {
        for (const Json& each : report["findings"]) {
            if (each["name"] == name && each["found"].get<std::string>().find(part) != std::string::npos) {
                return each;
            }
        }
        ADD_FAILURE() << "no " << name << " with \"" << part << "\" in " << report.dump(2);
        return {{"found", ""}, {"remedy", ""}};
    }
};

Examination examine(std::vector<std::string> options = {}) {
    options.insert(options.end(), {"doctor", "--json"});
    const RunResult run = runLumiset(options);
    return {run.status, Json::parse(run.out)};
}

/// As `lumiset list` counts them.
std::string effectCount() {
    return std::to_string(Json::parse(runLumiset({"list", "--json"}).out).size());
}

TEST(Doctor, IsContentWithTheBuild) {
    const Examination build = examine();
    EXPECT_EQ(build.status, 0);
    EXPECT_EQ(build.report["usable"], true);
    EXPECT_EQ(build.finding("Effects")["found"], effectCount() + ", all of which render");
    for (const char* name : {"Program", "Module", "Effects", "Monitor"}) {
        EXPECT_EQ(build.finding(name)["remedy"], "") << name;
    }
}

TEST(Doctor, TellsWhatIsWrongAndWhatHelps) {
    const WithoutOpenGL withoutOpenGL;
    const WithEnvironment withoutPrograms("PATH", "/nowhere");
    const Examination poor = examine();
    EXPECT_EQ(poor.status, 0) << "the processor renders";
    EXPECT_NE(poor.finding("OpenGL", "There is no OpenGL")["remedy"], "");
    EXPECT_EQ(poor.finding("ffmpeg")["found"], "not installed");

    const Examination empty = examine({"--module", "/nowhere/module.so"});
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.report["usable"], false);
    EXPECT_NE(empty.finding("Module", "/nowhere/module.so")["remedy"], "");
}

TEST(Doctor, NamesTheEffectsThatCrashed) {
    const OwnSettings settings;
    EXPECT_EQ(examine().finding("Crashes")["remedy"], "");
    ASSERT_TRUE(platform::storeCrashReport({"{guid}", "editor", "LumisetV5", "Old TV"}));
    EXPECT_NE(examine().finding("Crashes", "Old TV")["remedy"], "");
}

TEST(Doctor, NamesLooksThatCannotBeUsed) {
    const TemporaryFolder folder;
    const WithEnvironment data("XDG_DATA_HOME", folder.path().string());
    std::filesystem::create_directories(folder / "lumiset/looks");
    EXPECT_EQ(examine().finding("Looks", "0 of one's own in " + folder.path().string())["remedy"], "");
    writeFile(folder / "lumiset/looks/good.lumilook", R"({"lumilook": 1, "effects": [{"effect": "Outline"}]})");
    writeFile(folder / "lumiset/looks/bad.lumilook", R"({"lumilook": 1, "effects": [{"effect": "Out\u001bline"}]})");
    const Examination found = examine();
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.finding("Looks", "1 of one's own")["remedy"], "");
    const Json bad = found.finding("Looks", "bad.lumilook");
    EXPECT_NE(bad["remedy"], "");
    EXPECT_EQ(bad["found"].get<std::string>().find('\x1b'), std::string::npos) << "no terminal's orders";
}

/// A folder that hosts search, of which nothing can be loaded.
TEST(Doctor, LooksIntoThePlugins) {
    const TemporaryFolder folder;
    const WithEnvironment searched("FREI0R_PATH", "/nowhere:" + folder.path().string());
    EXPECT_EQ(examine().finding("frei0r", folder.path().string())["found"],
              folder.path().string() + ": none of the plug-ins");
    writeFile(folder / "lumiset_outline.so", "no library");
    const Json finding = examine().finding("frei0r", folder.path().string());
    EXPECT_NE(finding["found"].get<std::string>().find("0 of " + effectCount() + " plug-ins"), std::string::npos)
        << finding;
    EXPECT_NE(finding["found"].get<std::string>().find("not usable: lumiset_outline"), std::string::npos) << finding;
    EXPECT_NE(finding["remedy"], "");
}

TEST(Doctor, TellsOfAnFFmpegThatDoesNotStart) {
    const TemporaryFolder folder;
    writeFile(folder / "ffmpeg", "#!/nowhere\n");
    std::filesystem::permissions(folder / "ffmpeg", std::filesystem::perms::owner_all);
    const WithEnvironment searched("PATH", folder.path().string());
    EXPECT_NE(examine().finding("ffmpeg", "without the frei0r filter")["remedy"], "");
}

}  // namespace
}  // namespace lumiset::test
