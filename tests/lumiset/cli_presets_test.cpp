// Preset files and options from the command line.

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

class PresetCommands : public ::testing::Test {
protected:
    // Before any program starts: options of its own.
    PresetCommands() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }

    /// A preset file of "Outline" as the module writes it.
    static std::string presetFile(const std::string& name, const std::vector<std::string>& values) {
        std::string text =
            "<?xml version=\"1.0\" standalone=\"no\" ?>\n<!-- Effect's Preset File -->\n<Preset Name=\"" + name +
            "\" LibraryName=\"Vantrel Lumiset V\" EffectName=\"Outline\">\n";
        for (std::size_t i = 0; i < values.size(); ++i) {
            text +=
                std::string("    <parameter type=\"") + (i == 2 ? '3' : '2') + "\" value=\"" + values[i] + "\" />\n";
        }
        return text + "</Preset>\n";
    }

    TemporaryFolder folder;
};

TEST_F(PresetCommands, SaveShowCheckAndRenderAPresetFile) {
    const std::string file = folder / "Glühen.lumvc";
    const RunResult saved =
        runLumiset({"preset", "save", file, "-e", "outline", "-p", "Red Glow", "-s", "Width=10.1", "-s", "Opacity=50"});
    EXPECT_EQ(saved.status, 0) << saved.err;
    const RunResult shown = runLumiset({"preset", "load", file});
    EXPECT_EQ(shown.out, "Outline: Glühen\n  Width=10.1\n  Soften=100\n  Color=#FF0000\n  Opacity=50\n");

    const std::string broken = folder / "broken.lumvc";
    writeFile(broken, contentsOf(file).substr(0, 200));
    EXPECT_EQ(runLumiset({"preset", "check", file}).out, file + ": Outline, \"Glühen\"\n");
    const RunResult checked = runLumiset({"preset", "check", broken, file});
    EXPECT_EQ(checked.status, 1);
    EXPECT_NE(checked.out.find("broken.lumvc\" cannot be read or is not a preset.\n" + file + ": Outline"),
              std::string::npos)
        << checked.out;

    const auto render = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.begin(), {"render", "scene:64x48:0.04", folder / name, "-q", "-e", "Outline"});
        const RunResult run = runLumiset(options);
        EXPECT_EQ(run.status, 0) << run.err;
        return contentsOf(folder / name);
    };
    const std::string picture = render("file.png", {"--preset-file", file, "-s", "Opacity=100"});
    EXPECT_EQ(picture, render("options.png", {"-p", "Red Glow", "-s", "Width=10.1"}));
    EXPECT_NE(picture, render("plain.png", {}));

    const RunResult other =
        runLumiset({"render", "scene:64x48:0.04", folder / "x.png", "-e", "Old TV", "--preset-file", file});
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.err.find("is not a preset for the effect \"Old TV\""), std::string::npos) << other.err;
    EXPECT_EQ(runLumiset({"preset", "save", folder / "no/such.lumvc", "-e", "Outline"}).status, 1);
    EXPECT_EQ(runLumiset({"preset", "save", file, "-e", "Outline", "-s", "Width"}).status, 2);
    EXPECT_EQ(runLumiset({"preset"}).status, 2);
}

TEST_F(PresetCommands, ConvertPresetFilesToJsonAndBackToTheByte) {
    const std::string json = folder / "preset.json";
    const nlohmann::json effects = nlohmann::json::parse(runLumiset({"list", "--json"}).out);
    for (const nlohmann::json& effect : effects) {
        const std::string extension = std::string(".lumv") + static_cast<char>('a' + effect["index"].get<int>());
        const std::string file = folder / ("Grün & \"quoted\"" + extension);
        const std::string back = folder / ("back" + extension);
        const std::string name = effect["name"];
        const std::string preset =
            nlohmann::json::parse(runLumiset({"show", name, "--json"}).out)["presets"][0]["name"];
        EXPECT_EQ(runLumiset({"preset", "save", file, "-e", name, "-p", preset}).status, 0) << name;
        EXPECT_EQ(runLumiset({"preset", "convert", file, json, "-y"}).err, "") << name;
        EXPECT_EQ(runLumiset({"preset", "convert", json, back, "-y"}).err, "") << name;
        EXPECT_NE(contentsOf(file), "");
        EXPECT_EQ(contentsOf(back), contentsOf(file)) << name;
    }
}

TEST_F(PresetCommands, ConvertWhatNoPanelShows) {
    // A number next to zero, a negative zero, a colour of four bytes, and the two values around 1/3.
    const std::string odd = presetFile("&lt;&amp;#x41;", {"1e-45", "-0", "-16776961", "0.33333334"});
    writeFile(folder / "odd.lumvc", odd);
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "odd.lumvc", folder / "odd.json"}).err, "");
    EXPECT_EQ(
        contentsOf(folder / "odd.json"),
        "{\n  \"effect\": \"Outline\",\n  \"name\": \"<&#x41;\",\n  \"values\": {\n    \"Width\": 1e-43,\n    "
        "\"Soften\": {\n      \"stored\": -0.0\n    },\n    \"Color\": {\n      \"stored\": 4278190335\n    },\n    "
        "\"Opacity\": 33.333334\n  }\n}\n");
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "odd.json", folder / "back.LUMVC"}).err, "");
    EXPECT_EQ(contentsOf(folder / "back.LUMVC"), odd);
}

TEST_F(PresetCommands, AgreeOnValuesBeyondTheirRange) {
    const std::string far = presetFile("far", {"1.50", "-3", "0", "0.5"});
    const std::string near = presetFile("far", {"1", "0", "0", "0.5"});
    writeFile(folder / "far.lumvc", "<!-- mine -->" + far.substr(far.find("<Preset")));
    EXPECT_EQ(runLumiset({"preset", "check", folder / "far.lumvc"}).status, 0);
    EXPECT_NE(runLumiset({"preset", "load", folder / "far.lumvc"}).out.find("Width=100\n  Soften=0\n"),
              std::string::npos);
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "far.lumvc", folder / "near.lumvc"}).err, "");
    EXPECT_EQ(contentsOf(folder / "near.lumvc"), near);
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "far.lumvc", folder / "far.json"}).err, "");
    EXPECT_NE(contentsOf(folder / "far.json").find("\"Width\": 100.0"), std::string::npos);
    const std::string saved = folder / "far.lumvc.saved.lumvc";
    EXPECT_EQ(runLumiset({"preset", "save", saved, "-e", "Outline", "--preset-file", folder / "far.lumvc"}).err, "");
    EXPECT_EQ(contentsOf(saved).substr(contentsOf(saved).find("<parameter")), near.substr(near.find("<parameter")));

    writeFile(folder / "nan.lumvc", presetFile("nan", {"0.5", "nan", "0", "0.5"}));
    const std::vector<std::vector<std::string>> refused = {
        {"preset", "check", folder / "nan.lumvc"},
        {"preset", "load", folder / "nan.lumvc"},
        {"preset", "convert", folder / "nan.lumvc", folder / "nan.json"},
        {"preset", "save", folder / "out.lumvc", "-e", "Outline", "--preset-file", folder / "nan.lumvc"}};
    for (const std::vector<std::string>& each : refused) {
        const RunResult run = runLumiset(each);
        EXPECT_EQ(run.status, 1) << each[1];
        EXPECT_NE((run.out + run.err).find("is not a preset."), std::string::npos) << run.out << run.err;
    }
    EXPECT_EQ(folder.entries(), 5) << "nothing is left behind";
}

TEST_F(PresetCommands, RefuseJsonThatIsNoPreset) {
    const auto withValues = [](const std::string& values) {
        return R"({"effect": "Outline", "values": {)" + values + "}}";
    };
    struct Case {
        std::string json;
        std::string complaint;
    };
    const std::string deep(100000, '[');
    std::string manyKeys = "\"Width\": 1";
    for (int i = 0; i < 70000; ++i) {
        manyKeys += ",\"#" + std::to_string(i) + "\": 1";
    }
    const Case kCases[] = {
        {withValues(R"("Widht": 1)"), "Did you mean \"Width\"?"},
        {withValues(R"("Width": "1")"), "Width takes a number, 0 to 100, not \"1\"."},
        {withValues(R"("Width": 100.01)"), "Width takes 0 to 100, not"},
        {withValues(R"("Width": {"stored": 1.5})"), "Width takes a number"},
        {withValues(R"("Width": {"stored": null})"), "Width takes a number"},
        {withValues(R"("Width": {"store": 1})"), "Width takes a number"},
        {withValues(R"("Width": NaN)"), "It is not JSON; see line 1."},
        {withValues(R"("Width": 1e999)"), "A number in it is too large."},
        {withValues(R"("Width": 1, "Width": 1)"), "\"Width\" stands there twice."},
        {withValues(R"("Width": 1, "#0": 1)"), "Width is set twice."},
        {withValues(R"("Color": 255)"), "a colour as #RRGGBB, in quotation marks, not 255."},
        {withValues(R"("Color": {"stored": 4294967296})"), "a colour as"},
        {withValues(R"("Color": "#12345g")"), "a colour as"},
        {R"({"effect": "Outlin", "values": {}})", "Did you mean \"Outline\"?"},
        {R"({"effect": "Outline"})", "A preset has \"values\", an object"},
        {R"({"effect": 2, "values": {}})", "A preset has \"effect\""},
        {R"({"effect": "Outline", "value": {}})", "not \"value\"."},
        {R"({"effect": "Outline", "name": "a\nb", "values": {}})", "one line of at most 255 bytes in UTF-8."},
        {R"({"effect": "Outline", "name": ")" + std::string(256, 'n') + R"(", "values": {}})", "one line"},
        {"[]", "A preset is a JSON object."},
        {"\n{\n\"effect\"", "It is not JSON; see line 3."},
        {deep, "It is nested deeper than a preset."},
        {withValues(manyKeys), "It has more values than any effect."},
        {R"({"effect": ")" + std::string(1U << 19U, 'x') + R"(", "values": {}})", "A text in it is too long."},
        {withValues("") + std::string(1U << 20U, ' '), "is larger than a megabyte."},
    };
    const std::string before = presetFile("before", {"0", "0", "0", "0"});
    writeFile(folder / "out.lumvc", before);
    for (const Case& each : kCases) {
        writeFile(folder / "in.json", each.json);
        const RunResult run = runLumiset({"preset", "convert", folder / "in.json", folder / "out.lumvc", "-y"});
        EXPECT_EQ(run.status, 1) << each.json.substr(0, 200);
        EXPECT_NE(run.err.find(each.complaint), std::string::npos) << run.err.substr(0, 500);
        EXPECT_EQ(contentsOf(folder / "out.lumvc"), before);
    }
    writeFile(folder / "in.json", withValues(""));
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "in.json", folder / "out.lumva"}).status, 2)
        << "another effect's";
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "in.json", folder / "out.xml"}).status, 2);
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "missing.json", folder / "out.lumvc"}).status, 1);
    // Without a name in it the preset is called as the file.
    std::filesystem::copy(folder / "in.json", folder / "\xFF.json");
    EXPECT_NE(runLumiset({"preset", "convert", folder / "\xFF.json", folder / "out.lumvc", "-y"}).err.find("UTF-8"),
              std::string::npos);
    std::filesystem::remove(folder / "\xFF.json");
    std::filesystem::create_directory(folder / "taken.lumvc");
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "in.json", folder / "taken.lumvc"}).status, 1);
    EXPECT_EQ(folder.entries(), 3) << "nothing is left behind";
    EXPECT_EQ(runLumiset({"preset", "convert", folder / "in.json", folder / "out.lumvc", "-y"}).status, 0);
    EXPECT_EQ(contentsOf(folder / "out.lumvc"), presetFile("in", {"0.5", "0.5", "0", "0.5"})) << "defaults";
}

TEST_F(PresetCommands, ListAndSetOptionsForTheNextRun) {
    EXPECT_EQ(runLumiset({"options"}).out.find("yes"), std::string::npos);
    EXPECT_EQ(runLumiset({"options", "crop overscan", "Yes"}).status, 0);
    const std::string list = runLumiset({"options"}).out;
    EXPECT_NE(list.find("Crop Overscan          yes"), std::string::npos) << list;
    EXPECT_EQ(contentsOf(folder / "vantrel/Common.ini"), "[Common]\nCrop Overscan=yes\n");
    EXPECT_EQ(runLumiset({"options", "Crop Overscan", "perhaps"}).status, 2);
    EXPECT_EQ(runLumiset({"options", "Crop Overscan"}).status, 2);
    EXPECT_NE(runLumiset({"options", "Forced GPU", "yes"}).err.find("Did you mean \"Forced CPU\"?"), std::string::npos);
    ::setenv("XDG_CONFIG_HOME", "/dev/null", 1);
    const RunResult failed = runLumiset({"options", "Crop Overscan", "no"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(
        failed.err,
        "lumiset: The option \"Crop Overscan\" cannot be stored: /dev/null/vantrel/Common.ini: Not a directory.\n");
}

TEST_F(PresetCommands, ForcedCpuKeepsEffectsOffOpenGL) {
    if (runLumiset({"gpu", "info"}).status != 0) {
        GTEST_SKIP() << "No OpenGL here, nothing is tested.";
    }
    const std::vector<std::string> command = {"render", "scene:64x48:0.04", folder / "a.png", "-y", "--gpu",
                                              "-e",     "Outline"};
    EXPECT_EQ(runLumiset(command).err.find("processor"), std::string::npos);
    ASSERT_EQ(runLumiset({"options", "Forced CPU", "yes"}).status, 0);
    const RunResult forced = runLumiset(command);
    EXPECT_EQ(forced.status, 0);
    EXPECT_NE(forced.err.find("Forced CPU"), std::string::npos) << forced.err;
}

}  // namespace
}  // namespace lumiset::test
