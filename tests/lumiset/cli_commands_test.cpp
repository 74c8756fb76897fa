#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

using Json = nlohmann::json;

TEST(CommandLine, ListsTheEffects) {
    const RunResult text = runLumiset({"list"});
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("Outline "), std::string::npos) << text.out;
    const RunResult json = runLumiset({"list", "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json effects = Json::parse(json.out);
    ASSERT_EQ(static_cast<std::ptrdiff_t>(effects.size()), std::count(text.out.begin(), text.out.end(), '\n'));
    const auto outline =
        std::find_if(effects.begin(), effects.end(), [](const Json& each) { return each["name"] == "Outline"; });
    ASSERT_NE(outline, effects.end());
    EXPECT_EQ((*outline)["index"], 2);
    EXPECT_EQ((*outline)["parameters"], 4);
    EXPECT_EQ((*outline)["presets"], 9);
}

TEST(CommandLine, ShowsAnEffectAsItsPanelWould) {
    const RunResult text = runLumiset({"show", "outline"});
    EXPECT_EQ(text.status, 0) << text.err;
    for (const char* expected : {"#0  Width    50       0 to 100  Sets size of outline", "#000000  #RRGGBB",
                                 "Pumkin Glow", "Width=47.25, Soften=48.76, Color=#FF8000, Opacity=100"}) {
        EXPECT_NE(text.out.find(expected), std::string::npos) << expected << " in\n" << text.out;
    }
    const RunResult json = runLumiset({"show", "Outline", "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json effect = Json::parse(json.out);
    EXPECT_EQ(effect["parameters"][1]["label"], "Soften");
    EXPECT_EQ(effect["parameters"][1]["maximum"], 100.0);
    EXPECT_EQ(effect["parameters"][1]["default"], 50.0);
    EXPECT_EQ(effect["presets"][1]["name"], "Bad Chromakey");
    EXPECT_EQ(effect["presets"][1]["values"]["Color"], "#80FF00");
    EXPECT_EQ(effect["presets"][1]["values"]["Opacity"], 49.2958);
}

/// Every effect of the build can be read, and each of its parameters be said by the name that is shown for it.
TEST(CommandLine, ShowsEveryEffectCompletely) {
    for (const Json& entry : Json::parse(runLumiset({"list", "--json"}).out)) {
        const std::string name = entry["name"];
        const RunResult text = runLumiset({"show", name});
        const Json effect = Json::parse(runLumiset({"show", name, "--json"}).out);
        EXPECT_EQ(effect["parameters"].size(), entry["parameters"]);
        for (const Json& parameter : effect["parameters"]) {
            EXPECT_NE(text.out.find(parameter["label"].get<std::string>()), std::string::npos) << parameter;
            EXPECT_NE(parameter["tip"], "") << parameter;
        }
        for (const Json& preset : effect["presets"]) {
            EXPECT_NE(text.out.find(preset["name"].get<std::string>()), std::string::npos) << preset;
            EXPECT_EQ(preset["values"].size(), effect["parameters"].size()) << preset;
        }
    }
}

TEST(CommandLine, HelpsAndTellsItsVersion) {
    const RunResult general = runLumiset({"--help"});
    EXPECT_EQ(general.status, 0);
    EXPECT_NE(general.out.find("lumiset list"), std::string::npos);
    const RunResult render = runLumiset({"render", "--help"});
    EXPECT_EQ(render.status, 0);
    EXPECT_NE(render.out.find("--key"), std::string::npos);
    EXPECT_NE(render.out.find("Examples:"), std::string::npos);
    const RunResult alone = runLumiset({});
    EXPECT_EQ(alone.status, 0);
    EXPECT_NE(alone.out.find("lumiset render in.mp4"), std::string::npos);
    EXPECT_LT(alone.out.size(), general.out.size() / 4);
    EXPECT_EQ(runLumiset({"--version"}).out.rfind("lumiset ", 0), 0U);
}

TEST(CommandLine, AnswersWrongUsageWithOneSentenceAndStatus2) {
    struct Case {
        std::vector<std::string> arguments;
        const char* says;
    };
    const auto render = [](std::vector<std::string> more) {
        more.insert(more.begin(), {"render", "scene:16x16:1", "/nonexistent/out.png"});
        return more;
    };
    const Case kCases[] = {
        {{"rendr"}, "There is no command \"rendr\". Did you mean \"render\"?"},
        {{"show"}, "EFFECT"},
        {{"show", "Outlien"}, "There is no effect \"Outlien\". Did you mean \"Outline\"?"},
        {{"render", "scene"}, "OUTPUT"},
        {render({}), "at least one --effect"},
        {render({"--preset", "Bold Red", "--effect", "Outline"}), "--preset must stand behind the --effect"},
        {render({"--effect", "Outline", "--preset", "Bold Rad"}), "Did you mean \"Bold Red\""},
        {render({"--effect", "Outline", "--preset", "Bold Red", "--preset", "Red Glow"}), "two presets"},
        {render({"--effect", "Outline", "--set", "Widht=3"}), "Did you mean \"Width\"?"},
        {render({"--effect", "Outline", "--set", "Width=101"}), "Width takes 0 to 100, not \"101\"."},
        {render({"--effect", "Outline", "--set", "Color=blue"}), "#RRGGBB"},
        {render({"--effect", "Outline", "--set", "Width"}), "--set takes \"Label=value\", not \"Width\"."},
        {render({"--effect", "Outline", "--key", "Width=3"}), "--key takes \"Label@TIME=value\""},
        {render({"--effect", "Outline", "--key", "Width@-1=3"}), "--key takes \"Label@TIME=value\""},
        {render({"--effect", "Outline", "--key", "Width@1=3", "--set", "#0=4"}), "both by --set and by --key"},
        {render({"--effect", "Outline", "--depth", "12"}), "--depth"},
        {render({"--effect", "Outline", "--layout", "rgba"}), "--layout"},
        {render({"--effect", "Outline", "--threads", "0"}), "--threads"},
        {render({"--effect", "Outline", "--start", "soon"}), "--start takes seconds"},
        {render({"--effect", "Outline", "--duration", "0"}), "--duration must be longer"},
        {render({"--effect", "Outline", "--fps", "24/0"}), "--fps takes"},
        {render({"--effect", "Outline", "--size", "720"}), "--size takes"},
        {render({"--effect", "Outline", "--size", "x"}), "--size takes"},
        {render({"--effect", "Outline", "--size", "1280x8"}), "sides of 16 to 16384"},
        {render({"--effect", "Outline", "--durtion", "5"}), "no option \"--durtion\". Did you mean \"--duration\"?"},
        {{"render", "scene", "--efect=Outline"}, "no option \"--efect\". Did you mean \"--effect\"?"},
        {render({"more.png", "--effect", "Outline"}), "\"more.png\" is one argument too many."},
        {{"preset", "lod", "x"}, "Did you mean \"load\"?"},
    };
    for (const Case& each : kCases) {
        const RunResult result = runLumiset(each.arguments);
        EXPECT_EQ(result.status, 2) << each.says << '\n' << result.err;
        EXPECT_NE(result.err.find(each.says), std::string::npos) << each.says << " in: " << result.err;
        EXPECT_EQ(result.err.rfind("lumiset: ", 0), 0U) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

TEST(CommandLine, GoesOnWhereNobodyCanBeTold) {
    const auto statusOf = [](const std::string& arguments) {
        const int status = std::system((LUMISET_PROGRAM " " + arguments).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    EXPECT_EQ(statusOf("show Nothing 2>/dev/full"), 2);
    EXPECT_EQ(statusOf("show Nothing 2>&-"), 2);
    EXPECT_EQ(statusOf("list >&- 2>&-"), 1);
    EXPECT_EQ(statusOf("render scene:64x36:0.1 - -e Outline 2>/dev/full >/dev/null"), 0);
}

TEST(CommandLine, FailsClearlyWithoutTheModule) {
    const RunResult result = runLumiset({"--module", "/nonexistent/module.so", "list"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "lumiset: There is no effects module at /nonexistent/module.so.\n");
}

}  // namespace
}  // namespace lumiset::test
