#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/media.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

using testing::HasSubstr;

class Looks : public testing::Test {
protected:
    /// The bytes of a clip that was rendered with these options.
    std::string rendered(std::vector<std::string> options, const std::string& input = "scene:64x36:0.5:10") {
        const std::string file = folder / "out.y4m";
        options.insert(options.begin(), {"render", input, file, "-q", "-y"});
        const RunResult run = runLumiset(options);
        EXPECT_EQ(run.status, 0) << run.err;
        return contentsOf(file);
    }

    TemporaryFolder folder;
    WithEnvironment data{"XDG_DATA_HOME", folder.path().string()};
};

TEST_F(Looks, RenderAsTheLineThatMadeThem) {
    const std::vector<std::string> line = {
        "-e",     "Color Fixer Pro", "-p",         "Sepia", "--strength",      "33.3",  "-e",
        "Old TV", "--set",           "Noise=31.7", "--key", "Contrast@0:00=0", "--key", "Contrast@70%=12.34"};
    std::vector<std::string> save = {"look", "save", "Tape", "--about", "As it was."};
    save.insert(save.end(), line.begin(), line.end());
    ASSERT_EQ(runLumiset(save).status, 0);
    const std::string direct = rendered(line);
    EXPECT_EQ(rendered({"--look", "tape"}), direct);
    EXPECT_EQ(rendered({"--look", folder / "lumiset/looks/Tape.lumilook", "--strength", "100"}), direct);
    EXPECT_THAT(runLumiset({"look", "list"}).out, HasSubstr("As it was."));
    ASSERT_EQ(runLumiset({"look", "save", "Other", "--look", "Only Red", "--about", "Said anew."}).status, 0);
    EXPECT_THAT(runLumiset({"look", "show", "Other"}).out, HasSubstr("Said anew."));

    // They come in place of its keys.
    for (const auto& [option, value] : {std::pair{"--set", "Contrast=40"}, {"--key", "Contrast@0=40"}}) {
        std::vector<std::string> plain(line.begin(), line.begin() + 10);
        plain.insert(plain.end(), {option, value});
        EXPECT_EQ(rendered({"--look", "tape", option, std::string("Old TV/") + value}), rendered(plain));
    }

    // A part of the clip is a time in it; a still picture is the beginning of a second.
    const auto keyed = [&](const std::string& end, const std::string& input) {
        return rendered({"-e", "Old TV", "--key", "Contrast@0=0", "--key", "Contrast@" + end + "=40"}, input);
    };
    EXPECT_EQ(keyed("50%", "scene:64x36:0.5:10"), keyed("0.25", "scene:64x36:0.5:10"));
    ASSERT_EQ(runLumiset({"render", "scene:64x36:0.04", folder / "still.png", "-q", "-e", "Outline"}).status, 0);
    EXPECT_EQ(keyed("50%", folder / "still.png"), keyed("0.5", folder / "still.png"));

    // Values on top of it, and effects behind it.
    std::vector<std::string> changed = line;
    changed[9] = "Noise=80";
    changed.insert(changed.end(), {"-e", "Outline", "--strength", "50"});
    const std::vector<std::string> onTop = {"--look", "Tape",    "--set",      "old tv/Noise=80",
                                            "-e",     "Outline", "--strength", "50"};
    EXPECT_EQ(rendered(onTop), rendered(changed));
    EXPECT_NE(rendered(onTop), direct);
    save = {"look", "save", folder / "more.lumilook"};
    save.insert(save.end(), onTop.begin(), onTop.end());
    ASSERT_EQ(runLumiset(save).status, 0);
    EXPECT_EQ(rendered({"--look", folder / "more.lumilook"}), rendered(changed));
}

TEST_F(Looks, ShowWhereTheMaskIsWhiteAndAsMuchAsTheirStrengthSays) {
    const std::string mask = folder / "mask.png";
    media::Picture picture;
    picture.allocate(2, 2, media::Depth::kEightBit);
    // White on the left; black, and white that is transparent, on the right.
    const std::uint8_t halves[2][8] = {{255, 255, 255, 255, 0, 0, 0, 255}, {255, 255, 255, 255, 255, 255, 255, 0}};
    for (int y = 0; y < 2; ++y) {
        std::copy(std::begin(halves[y]), std::end(halves[y]), picture.row(y));
    }
    media::VideoFormat format;
    format.width = 2;
    format.height = 2;
    const auto sink = media::openSink(mask, format);
    sink->write(picture);
    sink->finish();

    const auto render = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.begin(),
                       {"render", "scene-full:64x36:0.04", folder / name, "-q", "-y", "-e", "Color Fixer Pro"});
        EXPECT_EQ(runLumiset(options).status, 0);
        media::Picture result;
        EXPECT_TRUE(media::openSource(folder / name)->read(result));
        return result;
    };
    const media::Picture all = render("all.png", {"-p", "Sepia"});
    const media::Picture none = render("none.png", {"-p", "Sepia", "--strength", "0"});
    const media::Picture masked = render("masked.png", {"-p", "Sepia", "--mask", mask});
    media::Picture source;
    ASSERT_TRUE(media::openSource("scene-full:64x36:0.04")->read(source));
    for (int y = 0; y < 36; ++y) {
        EXPECT_TRUE(std::equal(none.row(y), none.row(y) + 256, source.row(y)));
        EXPECT_TRUE(std::equal(masked.row(y), masked.row(y) + 64, all.row(y))) << "the mask's white quarter";
        EXPECT_TRUE(std::equal(masked.row(y) + 192, masked.row(y) + 256, source.row(y) + 192)) << "its black quarter";
    }
    EXPECT_FALSE(std::equal(all.row(20), all.row(20) + 256, source.row(20)));
}

TEST_F(Looks, ComplainOfWhatCannotBe) {
    writeFile(folder / "keys.lumilook", R"({"lumilook": 1, "effects": [{"effect": "Outline", "strength": 40,
        "keys": {"Width": [{"at": "50%", "value": 1}]}}, {"effect": "Outline"}]})");
    const std::string keys = folder / "keys.lumilook";
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* message;
    } runs[] = {
        {{"render", "scene", "x.png", "--look", "Onli Red"}, 1, "Only Red"},
        {{"render", "scene", "x.png", "--look", "Only Red", "--set", "Noise=1"}, 2, "Selective Color/Label=value"},
        {{"render", "scene", "x.png", "--look", keys, "--set", "Outline/Width=1"}, 2, "Outline#2"},
        {{"render", "scene", "x.png", "--look", "Only Red", "-p", "Snow"}, 2, "belong to effects"},
        {{"render", "scene", "x.png", "-e", "Outline", "--strength", "101"}, 2, "0 to 100"},
        {{"render", "-", "x.png", "--look", keys}, 2, "length"},
        {{"render", "scene", "x.png", "-e", "Outline", "--mask", "nowhere.png"}, 1, "nowhere.png"},
        {{"export", "ffmpeg", "--look", keys}, 2, "has keys"},
        {{"look", "save", folder / "a.json", "-e", "Outline"}, 2, ".lumilook"},
        {{"look", "save", folder / "a.lumilook", "--look", "Only Red", "--strength", "50", "-e", "Outline"},
         2,
         "saved alone"},
        {{"look", "save", folder / "a.lumilook", "-e", "Outline", "--look", "Only Red", "--strength", "50"},
         2,
         "saved alone"},
        {{"look", "check", keys, folder / "b.lumilook"}, 1, ""},
        {{"gallery", "--looks", "scene", "x.png", "-e", "Outline"}, 2, "all looks"},
    };
    for (const auto& run : runs) {
        const RunResult result = runLumiset(run.arguments);
        EXPECT_EQ(result.status, run.status) << run.arguments[1] << ' ' << result.err;
        EXPECT_THAT(result.err, HasSubstr(run.message));
    }
    EXPECT_EQ(
        rendered({"--look", keys, "--set", "Outline#2/Width=0", "--key", "Outline#1/Width@0=0", "--strength", "0"}),
        rendered({"-e", "Outline", "--strength", "0"}));
}

}  // namespace
}  // namespace lumiset::test
