// Contact sheets from the command line.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "hostkit/effect_catalogue.h"
#include "hostkit/module.h"
#include "media/media.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::test {
namespace {

using media::Picture;

Picture readPicture(const std::string& file) {
    Picture picture;
    EXPECT_TRUE(media::openSource(file)->read(picture)) << file;
    return picture;
}

struct Place {
    int x;
    int y;
};

bool standsAt(const Picture& sheet, const Picture& picture, Place place) {
    for (int y = 0; y < picture.height; ++y) {
        if (std::memcmp(sheet.row(place.y + y) + 4 * place.x, picture.row(y),
                        static_cast<std::size_t>(picture.width) * 4) != 0) {
            return false;
        }
    }
    return true;
}

/// Where on the sheet a picture is first found, unscaled, in the order of reading behind `after`.
std::optional<Place> find(const Picture& sheet, const Picture& picture, Place after) {
    for (int y = after.y; y + picture.height <= sheet.height; ++y) {
        for (int x = y == after.y ? after.x + 1 : 0; x + picture.width <= sheet.width; ++x) {
            if (standsAt(sheet, picture, {x, y})) {
                return Place{x, y};
            }
        }
    }
    return std::nullopt;
}

bool hasInk(const Picture& sheet, Place from, int width, int height) {
    int brightest = 0;
    for (int y = from.y; y < std::min(from.y + height, sheet.height); ++y) {
        for (int x = from.x; x < from.x + width; ++x) {
            brightest = std::max<int>(brightest, sheet.row(y)[4 * x]);
        }
    }
    return brightest > 128;
}

TEST(Gallery, ShowsThePictureAndEveryPresetAsRenderDoesEachWithALabel) {
    const TemporaryFolder folder;
    const std::string source = folder / "source.png";
    ASSERT_EQ(runLumiset({"render", "scene-full:96x54:1", source, "--duration", "0.03", "-e", "Color Fixer Pro", "-p",
                          "Reset to None"})
                  .status,
              0);
    const std::string output = folder / "sheet.png";
    const RunResult run = runLumiset({"gallery", "color fixer pro", source, output, "--tile", "96", "--columns", "5"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Picture sheet = readPicture(output);

    std::vector<std::string> pictures{source};
    const hostkit::Module module;
    const hostkit::EffectCatalogue catalogue(module.effectLibrary());
    for (const auto& preset : catalogue.effect("Color Fixer Pro").presets) {
        pictures.push_back(folder / preset.name + ".png");
        ASSERT_EQ(runLumiset({"render", source, pictures.back(), "-e", "Color Fixer Pro", "-p", preset.name}).status,
                  0);
    }
    Place last{-1, 0};
    for (const std::string& file : pictures) {
        const std::optional<Place> place = find(sheet, readPicture(file), last);
        ASSERT_TRUE(place) << file;
        EXPECT_TRUE(hasInk(sheet, {place->x, place->y + 54}, 96, 12)) << file;
        last = *place;
    }
    EXPECT_FALSE(find(sheet, readPicture(pictures[4]), last)) << "a picture too many";
}

TEST(Gallery, ShowsChosenSettingsOverACheckerboard) {
    const TemporaryFolder folder;
    const std::string output = folder / "sheet.png";
    const RunResult run = runLumiset({"gallery", "scene-cutout:96x54:1", output, "--tile", "96", "-e", "Outline", "-p",
                                      "Reset to None", "-e", "Outline", "-p", "Solid Black", "--set", "Color=#00FF00"});
    ASSERT_EQ(run.status, 0) << run.err;
    const Picture sheet = readPicture(output);
    int green = 0;
    int lightGrey = 0;
    int darkGrey = 0;
    for (int y = 0; y < sheet.height; ++y) {
        for (int x = 0; x < sheet.width; ++x) {
            const std::uint8_t* pixel = sheet.row(y) + 4 * x;
            const bool grey = pixel[0] == pixel[1] && pixel[1] == pixel[2];
            green += pixel[1] == 255 && pixel[0] == 0 ? 1 : 0;
            lightGrey += grey && pixel[0] == 150 ? 1 : 0;
            darkGrey += grey && pixel[0] == 110 ? 1 : 0;
        }
    }
    EXPECT_GT(green, 300);
    EXPECT_GT(lightGrey, 1000);
    EXPECT_GT(darkGrey, 1000);
}

/// True when a sheet of one torn television at some time of the input shows the picture of that time.
bool showsMoment(const TemporaryFolder& folder, const Picture& expected, const std::string& input,
                 std::vector<std::string> options, const std::string& standardInput = "/dev/null") {
    const std::string output = folder / "sheet.png";
    options.insert(options.begin(),
                   {"gallery", input, output, "-e", "Old TV", "-p", "Messed Up", "--tile", "64", "--overwrite"});
    const RunResult run = runLumiset(options, standardInput);
    EXPECT_EQ(run.status, 0) << run.err;
    return find(readPicture(output), expected, {-1, 0}).has_value();
}

TEST(Gallery, TakesThePictureAtATimeFromEveryKindOfInput) {
    const TemporaryFolder folder;
    const std::string scene = "scene-full:64x36:4:10";
    const std::string clip = folder / "clip.mkv";
    const std::string pipe = folder / "clip.y4m";
    const std::string still = folder / "still.png";
    const std::string torn = folder / "torn.png";
    const std::string piped = folder / "piped.png";
    const std::vector<std::string> neutral{"-e", "Outline", "-p", "Reset to None"};
    const std::vector<std::string> television{"-e", "Old TV", "-p", "Messed Up", "--start", "1.2", "--duration", "0.1"};
    const auto make = [&](std::vector<std::string> arguments, const std::vector<std::string>& more) {
        arguments.insert(arguments.end(), more.begin(), more.end());
        const RunResult run = runLumiset(arguments);
        ASSERT_EQ(run.status, 0) << run.err;
    };
    make({"render", scene, clip, "--codec", "ffv1"}, neutral);
    make({"render", scene, still, "--start", "1.2", "--duration", "0.05"}, neutral);
    make({"render", clip, pipe}, neutral);
    make({"render", scene, torn}, television);
    make({"render", pipe, piped}, television);

    const Picture expected = readPicture(torn);
    EXPECT_TRUE(showsMoment(folder, expected, scene, {"--time", "1.2"}));
    EXPECT_TRUE(showsMoment(folder, expected, clip, {"--time", "0:01.2"}));
    EXPECT_TRUE(showsMoment(folder, expected, still, {"--time", "1.2"})) << "a still picture's effects move as well";
    EXPECT_TRUE(showsMoment(folder, readPicture(piped), "-", {"--time", "1.2"}, pipe));
    EXPECT_TRUE(showsMoment(folder, expected, "scene-full:64x36:2.4:10", {})) << "a short clip is shown at its middle";
    EXPECT_FALSE(showsMoment(folder, expected, scene, {}));

    const std::ptrdiff_t entries = folder.entries();
    for (const std::string& input : {scene, clip, std::string("-")}) {
        const RunResult run = runLumiset({"gallery", "Outline", input, folder / "none.png", "--time", "60"}, pipe);
        EXPECT_EQ(run.status, 1) << input;
        EXPECT_NE(run.err.find("over before"), std::string::npos) << run.err;
    }
    EXPECT_EQ(folder.entries(), entries);
}

TEST(Gallery, AsksForAllItNeeds) {
    EXPECT_EQ(runLumiset({"gallery", "Outline"}).status, 2);
    EXPECT_EQ(runLumiset({"gallery", "Outline", "scene", "x.png", "-e", "Outline"}).status, 2);
    EXPECT_EQ(runLumiset({"gallery", "scene", "x.png", "-p", "Red Glow"}).status, 2);
}

TEST(Gallery, LeavesNothingWhenInterrupted) {
    const TemporaryFolder folder;
    std::vector<std::string> command{"gallery", "scene-full:640x360", folder / "sheet.png"};
    for (int i = 0; i < 400; ++i) {
        command.insert(command.end(), {"-e", "Old TV", "-p", "Messed Up"});
    }
    const RunResult run = runLumiset(command, "/dev/null", [](pid_t process) { interrupt(process, SIGTERM); });
    EXPECT_EQ(run.status, 128 + SIGTERM) << run.err;
    EXPECT_EQ(folder.entries(), 0);
}

}  // namespace
}  // namespace lumiset::test
