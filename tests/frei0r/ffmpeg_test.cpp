// The plug-ins in FFmpeg's frei0r filter, held against `lumiset render` of the same clip.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "adapters/frei0r/parameter_list.h"
#include "tests/frei0r/frei0r_host.h"
#include "tests/lumiset/cli_run.h"

namespace lumiset::frei0r {
namespace {

int run(const std::string& command) {
    return std::system(command.c_str());
}

TEST(FFmpeg, RendersWhatLumisetRenders) {
    if (run("ffmpeg -v quiet -h filter=frei0r | grep -q filter_params") != 0) {
        GTEST_SKIP() << "there is no ffmpeg with frei0r";
    }
    const test::TemporaryFolder folder;
    ::setenv("FREI0R_PATH", pluginFolder().c_str(), 1);
    const std::string clip = folder / "clip.mkv";
    const std::string lumiset = LUMISET_PROGRAM;
    const std::string raw = " -pix_fmt bgra -f rawvideo ";
    // Rows of a multiple of 64 bytes: others FFmpeg 5.1 pads without telling, to the harm of all frei0r filters.
    ASSERT_EQ(run(lumiset + " render scene:128x72:0.24:25 " + clip +
                  " --quiet --alpha --effect 'Alpha Processor' --preset 'Reset to None'"),
              0);
    for (const hostkit::EffectDescription& effect : reference().catalogue.effects()) {
        SCOPED_TRACE(effect.name);
        const std::string& preset = effect.presets.back().name;
        const std::string rendered = folder / "rendered.mkv";
        const std::string expected = folder / "expected.raw";
        const std::string filtered = folder / "filtered.raw";
        ASSERT_EQ(run(lumiset + " render " + clip + " " + rendered + " --quiet --overwrite --alpha --effect '" +
                      effect.name + "' --preset '" + preset + "'"),
                  0);
        ASSERT_EQ(run("ffmpeg -v error -y -i " + rendered + raw + expected), 0);
        ASSERT_EQ(run("ffmpeg -v error -y -i " + clip + " -vf 'frei0r=" + pluginName(effect.name) + ":" + preset + "'" +
                      raw + filtered),
                  0);
        const std::string pictures = test::contentsOf(filtered);
        EXPECT_EQ(pictures.size(), std::size_t{6 * 128 * 72 * 4});
        EXPECT_TRUE(pictures == test::contentsOf(expected)) << preset;
    }
}

}  // namespace
}  // namespace lumiset::frei0r
