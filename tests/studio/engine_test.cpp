#include "apps/studio/core/engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <mutex>

#include "hostkit/look_json.h"
#include "hostkit/module.h"
#include "render/file_render.h"
#include "tests/studio/interlaced_clip.h"

namespace lumiset::studio {
namespace {

constexpr const char* kClip = "scene:320x180:2";

class EngineTest : public testing::Test {
protected:
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    Engine engine{module.effectLibrary(), catalogue, std::size_t{64} << 20};
    std::string openError;

    std::optional<ClipInfo> open(const std::string& path) {
        std::optional<ClipInfo> opened;
        engine.open(path, [&](const ClipInfo* info, const std::string& error) {
            openError = error;
            if (info != nullptr) {
                opened = *info;
            }
        });
        engine.waitUntilIdle();
        return opened;
    }

    LookSnapshot lookOf(const std::string& effects) {
        return std::make_shared<const hostkit::Look>(
            hostkit::lookFromJson(catalogue, R"({"lumilook": 1, "effects": [)" + effects + "]}", "test"));
    }

    FrameShot show(const FrameWish& wish) {
        FrameShot shown;
        engine.show(wish, [&](FrameShot&& shot) { shown = std::move(shot); });
        engine.waitUntilIdle();
        return shown;
    }
};

FrameWish wishFor(std::int64_t frame, LookSnapshot look, Size size = {320, 180}) {
    FrameWish wish;
    wish.frame = frame;
    wish.look = std::move(look);
    wish.size = size;
    return wish;
}

// What the window shows is what is exported: the same bytes for an effect that moves, with keys.
TEST_F(EngineTest, ShowsThePixelsThatAreExported) {
    ASSERT_TRUE(open(kClip)) << openError;
    const LookSnapshot look = lookOf(
        R"({"effect": "Old TV", "preset": "Messed Up"},
           {"effect": "Color Fixer Pro", "keys": {"Brightness": [{"at": 0, "value": 0}, {"at": "100%", "value": 50}]}})");
    const std::string folder = testing::TempDir() + "/lumiset_engine";
    std::filesystem::create_directories(folder);
    render::FileJob job;
    job.input = kClip;
    job.output = folder + "/frame_%03d.png:0";
    const auto chain = hostkit::buildChain(module.effectLibrary(), catalogue, {{*look, nullptr}}, 2.0);
    const auto ignore = [](auto&&...) {};
    const auto result =
        render::renderFile(job, chain, {ignore, ignore, [] { return false; }, [] {}, {ignore, ignore}, ignore});
    ASSERT_TRUE(result);
    ASSERT_EQ(result->frames, 50);
    for (const std::int64_t frame : {31, 0, 49, 7}) {  // backwards too
        const FrameShot shot = show(wishFor(frame, look));
        ASSERT_EQ(shot.error, "");
        char name[32];
        std::snprintf(name, sizeof name, "/frame_%03d.png", static_cast<int>(frame));
        media::Picture exported;
        ASSERT_TRUE(media::openSource(folder + name)->read(exported));
        EXPECT_TRUE(displayOf(exported, {320, 180}, nullptr).bytes == shot.picture->bytes) << "frame " << frame;
    }
    std::filesystem::remove_all(folder);
}

TEST_F(EngineTest, ComparesWithTheSourceAndWithOtherLooks) {
    ASSERT_TRUE(open(kClip));
    FrameWish wish = wishFor(5, lookOf(R"({"effect": "Color Fixer Pro", "preset": "Sepia"})"));
    wish.compares = true;
    const FrameShot withSource = show(wish);
    const FrameShot source = show(wishFor(5, nullptr));
    ASSERT_NE(withSource.before, nullptr);
    EXPECT_EQ(withSource.before->bytes, source.picture->bytes);
    EXPECT_NE(withSource.before->bytes, withSource.picture->bytes);
    wish.before = wish.look;
    EXPECT_EQ(show(wish).before->bytes, withSource.picture->bytes);
}

TEST_F(EngineTest, RendersOnceAndRemembersPartsOfTheSizeApart) {
    ASSERT_TRUE(open(kClip));
    FrameWish wish = wishFor(3, lookOf(R"({"effect": "Old TV", "preset": "Snow"})"), {160, 90});
    const FrameShot first = show(wish);
    EXPECT_GT(first.effectSeconds, 0.0);
    const FrameShot again = show(wish);
    EXPECT_EQ(again.effectSeconds, 0.0);
    EXPECT_EQ(again.picture, first.picture);
    EXPECT_EQ(engine.cachedFrames(wish), std::vector<std::int64_t>{3});
    wish.divisor = 2;
    EXPECT_TRUE(engine.cachedFrames(wish).empty());
    EXPECT_NE(show(wish).picture->bytes, first.picture->bytes) << "small renders look different";
    EXPECT_LE(engine.cachedBytes(), std::size_t{64} << 20);
}

TEST_F(EngineTest, KeepsTheClipWhereTheNextCannotBeOpened) {
    ASSERT_TRUE(open(kClip));
    EXPECT_FALSE(open("/nowhere/clip.mp4"));
    EXPECT_NE(openError.find("clip.mp4"), std::string::npos) << openError;
    EXPECT_EQ(show(wishFor(0, nullptr)).error, "");
    const auto info = open("scene:64x48:1:30");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->frameCount, 30);
    EXPECT_EQ(info->format.width, 64);
}

TEST_F(EngineTest, DrawsThumbnailsAndReadsAheadBehindWhatIsShown) {
    ASSERT_TRUE(open("scene:1280x720:1"));
    std::vector<std::string> order;  // filled on one thread
    const LookSnapshot look = lookOf(R"({"effect": "Outline", "preset": "Red Glow"})");
    for (int i = 0; i < 3; ++i) {
        engine.addThumbnail(wishFor(2, look, {144, 81}), [&](FrameShot&& shot) {
            order.push_back(shot.error + "thumbnail " + std::to_string(shot.picture->size.width));
        });
    }
    engine.readAhead({wishFor(3, nullptr)}, [&](FrameShot&&) { order.emplace_back("ahead"); });
    engine.show(wishFor(2, nullptr), [&](FrameShot&&) { order.emplace_back("shown"); });
    engine.waitUntilIdle();
    ASSERT_EQ(order.size(), 5U);
    EXPECT_EQ(std::count(order.begin(), order.end(), "thumbnail 144"), 3);
    EXPECT_EQ(order.back(), "thumbnail 144") << "the last of the least urgent comes last";
    EXPECT_LT(std::find(order.begin(), order.end(), "shown"), std::find(order.begin(), order.end(), "ahead"));
}

TEST_F(EngineTest, ShowsTheFieldsOfInterlacedClips) {
    const std::string file = testing::TempDir() + "/lumiset_fields.mkv";
    for (const bool topFirst : {true, false}) {
        writeInterlaced(file, topFirst);
        ASSERT_TRUE(open(file)) << openError;
        FrameWish wish = wishFor(0, nullptr, {64, 48});
        const auto rows = [&](Fields fields) {  // two in the middle
            wish.fields = fields;
            const FrameShot shot = show(wish);
            return std::pair<int, int>(shot.picture->pixel(30, 20)[1], shot.picture->pixel(30, 21)[1]);
        };
        const std::pair<int, int> top{200, 200};
        const std::pair<int, int> bottom{50, 50};
        EXPECT_EQ(rows(Fields::kWoven), std::pair(200, 50));
        EXPECT_EQ(rows(Fields::kFirst), topFirst ? top : bottom);
        EXPECT_EQ(rows(Fields::kSecond), topFirst ? bottom : top);
    }
    std::filesystem::remove(file);
}

TEST_F(EngineTest, PicksTheMeanColourUnderThePointer) {
    ASSERT_TRUE(open(kClip));
    std::optional<std::uint32_t> color;
    engine.pick(wishFor(0, nullptr), 0.5, 0.5, [&](std::optional<std::uint32_t> picked) { color = picked; });
    engine.waitUntilIdle();
    ASSERT_TRUE(color);
    const FrameShot shot = show(wishFor(0, nullptr));
    double sum = 0.0;
    for (int i = 0; i < 25; ++i) {
        sum += shot.picture->pixel(158 + i % 5, 88 + i / 5)[2];
    }
    EXPECT_EQ(*color & 0xFFU, static_cast<std::uint32_t>(std::lround(sum / 25.0))) << "red, in the lowest byte";
}

}  // namespace
}  // namespace lumiset::studio
