#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "hostkit/host_allocator.h"
#include "hostkit/module.h"
#include "hostkit/renderer.h"
#include "tests/hostkit/fake_effect.h"

namespace lumiset::hostkit {
namespace {

EffectStage stageOf(test::FakeEffect& effect, const EffectDescription& description) {
    effect.AddRef();
    return {ComPtr<IVideoGPUEffect>::adopt(&effect), ParameterStore(description)};
}

std::uint8_t* storedRow(const VideoFrameDesc& frame, std::int32_t y) {
    return static_cast<std::uint8_t*>(frame.data) + static_cast<std::ptrdiff_t>(frame.stride) * y;
}

TEST(Renderer, AppliesAChainInTurnInTheFormatAskedFor) {
    test::FakeEffect doubling;
    test::FakeEffect adding;
    std::vector<std::uint32_t> formats;
    doubling.render = [&](IEffectHost*, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                          const FrameRenderInfo&) {
        formats.push_back(source.format);
        formats.push_back(destination.format);
        storedRow(destination, 0)[1] = static_cast<std::uint8_t>(2 * storedRow(source, 0)[1]);
        return true;
    };
    adding.render = [](IEffectHost* host, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                       const FrameRenderInfo&) {
        ParamValue value{};
        host->GetParamValue(11, &value, kParamSlider);
        storedRow(destination, 0)[1] =
            static_cast<std::uint8_t>(storedRow(source, 0)[1] + static_cast<int>(255.0F * value.slider));
        return true;
    };
    const EffectDescription description = describeEffect(doubling, 0);
    {
        std::vector<EffectStage> chain{stageOf(doubling, description), stageOf(adding, description),
                                       stageOf(doubling, description)};
        chain[1].parameters.set("#11", "20");
        FrameBuffer source(1, 1, kFormatBgra8);
        FrameBuffer destination(1, 1, kFormatBgra8);
        source.row(0)[2] = 10;  // Red, which is sample 1 where alpha comes first.
        Renderer renderer(chain, kFormatArgb8);
        renderer.render(source.desc(), destination.desc(), {});
        EXPECT_EQ(destination.row(0)[2], 2 * (2 * 10 + 51));
        EXPECT_EQ(source.row(0)[2], 10);
    }
    EXPECT_EQ(formats, std::vector<std::uint32_t>(4, kFormatArgb8));
    EXPECT_EQ(doubling.references, 1U);
}

TEST(Renderer, MixesGroupsOfStagesWithThePictureBeforeThem) {
    test::FakeEffect adding;
    adding.render = [](IEffectHost* host, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                       const FrameRenderInfo&) {
        ParamValue value{};
        host->GetParamValue(11, &value, kParamSlider);
        for (int i = 0; i < 4; ++i) {
            const bool isAlpha = i == static_cast<int>(AlphaIndex(source.format));
            const int added = isAlpha ? 0 : static_cast<int>(100.0F * value.slider + 0.5F);
            storedRow(destination, 0)[i] = static_cast<std::uint8_t>(storedRow(source, 0)[i] + added);
        }
        return true;
    };
    const EffectDescription description = describeEffect(adding, 0);
    std::vector<EffectStage> chain;
    for (const char* added : {"8", "16", "32", "64", "6"}) {
        chain.push_back(stageOf(adding, description));
        chain.back().parameters.set("#11", added);
    }
    // The second alone by half, the second to the fourth by a quarter, and of everything three quarters.
    chain[1].mixes = {{1, {0.5F, nullptr}}};
    chain[3].mixes = {{3, {0.25F, nullptr}}};
    chain[4].mixes = {{5, {0.75F, nullptr}}};
    Renderer renderer(chain, kFormatArgb8);
    for (const PixelFormat format : {kFormatArgb8, kFormatBgra8}) {
        FrameBuffer source(1, 1, format);
        FrameBuffer destination(1, 1, format);
        std::memset(source.row(0), 20, 4);
        source.row(0)[AlphaIndex(format)] = 255;
        renderer.render(source.desc(), destination.desc(), {});
        EXPECT_EQ(destination.row(0)[1], 20 + (8 + (16 / 2 + 32 + 64) / 4 + 6) * 3 / 4) << "format " << format;
        EXPECT_EQ(source.row(0)[1], 20);
    }
}

TEST(Renderer, RendersEachFieldAtItsTimeAndWeavesThemAgain) {
    test::FakeEffect effect;
    effect.render = [](IEffectHost* host, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                       const FrameRenderInfo& info) {
        EXPECT_EQ(info.flags, 0x60U);
        EXPECT_DOUBLE_EQ(info.pixelAspect, 1.5);
        EXPECT_EQ(source.height, 2);
        ParamValue value{};
        host->GetParamValue(11, &value, kParamSlider);
        EXPECT_FLOAT_EQ(value.slider, static_cast<float>(info.timeSeconds) / 100.0F) << "the host's values too";
        for (std::int32_t y = 0; y < source.height; ++y) {
            std::uint8_t* out = storedRow(destination, y);
            out[0] = storedRow(source, y)[0];
            out[1] = static_cast<std::uint8_t>(info.field);
            out[2] = static_cast<std::uint8_t>(info.timeSeconds);
        }
        return true;
    };
    const EffectDescription description = describeEffect(effect, 0);
    std::vector<EffectStage> chain{stageOf(effect, description)};
    chain[0].parameters.addKey("#11", 0.0, "0");
    chain[0].parameters.addKey("#11", 100.0, "100");
    FrameBuffer source(1, 4, kFormatBgra8);
    FrameBuffer destination(1, 4, kFormatBgra8);
    for (std::int32_t y = 0; y < 4; ++y) {
        source.row(y)[0] = static_cast<std::uint8_t>(40 + y);
    }
    for (const FieldOrder order : {FieldOrder::kTopFirst, FieldOrder::kBottomFirst}) {
        Renderer renderer(chain, kFormatBgra8);
        renderer.render(source.desc(), destination.desc(), {10.0, 2.0, 1.5, order});
        for (std::int32_t y = 0; y < 4; ++y) {
            const bool second = (y % 2 == 1) == (order == FieldOrder::kTopFirst);
            EXPECT_EQ(destination.row(y)[0], 40 + y) << "rows stand in their places";
            EXPECT_EQ(destination.row(y)[1], y % 2);
            EXPECT_EQ(destination.row(y)[2], second ? 11 : 10);
        }
    }
}

TEST(Renderer, TakesWhatItsFirstChoiceDoesWhereverThatStops) {
    test::FakeEffect effect;
    effect.render = [](IEffectHost* host, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                       const FrameRenderInfo& info) {
        ParamValue value{};
        host->GetParamValue(11, &value, kParamSlider);
        for (std::int32_t y = 0; y < source.height; ++y) {
            const int step = static_cast<int>(100.0F * value.slider + 0.5F) + static_cast<int>(info.timeSeconds);
            std::memmove(storedRow(destination, y), storedRow(source, y), 4);
            storedRow(destination, y)[1] = static_cast<std::uint8_t>(3 * storedRow(source, y)[1] + step);
        }
        return true;
    };
    const EffectDescription description = describeEffect(effect, 0);
    std::vector<EffectStage> chain;
    for (const char* step : {"1", "2", "3", "4", "5", "6"}) {
        chain.push_back(stageOf(effect, description));
        chain.back().parameters.set("#11", step);
    }
    chain[3].mixes = {{1, {0.5F, nullptr}}, {2, {0.5F, nullptr}}};
    FrameBuffer source(1, 4, kFormatArgb8);
    for (std::int32_t y = 0; y < 4; ++y) {
        std::memset(source.row(y), 255, 4);
        source.row(y)[1] = static_cast<std::uint8_t>(20 + y);
    }
    for (const PixelFormat format : {kFormatArgb8, kFormatBgra8}) {
        for (const FieldOrder order : {FieldOrder::kProgressive, FieldOrder::kTopFirst}) {
            const auto rendered = [&](const RunRenderer& first) {
                FrameBuffer result(1, 4, format);
                std::memset(result.desc().data, 255, static_cast<std::size_t>(result.desc().stride) * 4);
                Renderer renderer(chain, kFormatArgb8);
                renderer.setFirstChoice(first);
                renderer.render(source.desc(), result.desc(), {10.0, 2.0, 1.0, order});
                std::vector<int> rows;
                for (std::int32_t y = 0; y < 4; ++y) {
                    rows.push_back(result.row(y)[format == kFormatArgb8 ? 1 : 2]);
                }
                return rows;
            };
            const std::vector<int> expected = rendered({});
            for (std::size_t most = 0; most < 5; ++most) {
                for (std::size_t lessInTheSecondField = 0; lessInTheSecondField <= most; ++lessInTheSecondField) {
                    std::size_t longest = 0;
                    const RunRenderer first = [&](std::span<const EffectCall> calls, const VideoFrameDesc& from,
                                                  const VideoFrameDesc& to, const FrameRenderInfo& info) {
                        longest = std::max(longest, calls.size());
                        const std::size_t end =
                            std::min(calls.size(), info.field == 1 ? most - lessInTheSecondField : most);
                        VideoFrameDesc last = from;
                        for (std::size_t i = 0; i < end; ++i) {
                            EXPECT_TRUE(calls[i].effect.ProcessFrame(&calls[i].host, &last, nullptr, &to, &info));
                            last = to;
                        }
                        return end;
                    };
                    EXPECT_EQ(rendered(first), expected) << most << ", " << lessInTheSecondField << " less";
                    EXPECT_EQ(longest, 2U) << "stages without a mix between them or a frame that is mixed";
                }
            }
        }
    }
}

TEST(Renderer, SaysWhichEffectFailed) {
    test::FakeEffect effect;
    const EffectDescription description = describeEffect(effect, 0);
    const std::vector<EffectStage> chain{stageOf(effect, description)};
    const FrameBuffer source(2, 2, kFormatBgraFloat);
    const FrameBuffer destination(2, 2, kFormatBgraFloat);
    try {
        Renderer(chain, kFormatBgraFloat).render(source.desc(), destination.desc(), {});
        FAIL() << "a refused frame went unnoticed";
    } catch (const RenderError& error) {
        EXPECT_NE(std::string(error.what()).find("\"Fake\""), std::string::npos) << error.what();
    }
}

TEST(Module, RendersThroughTheHostsAllocatorAndUnloads) {
    const ComPtr<IHostAllocator> allocator = PoolAllocator::create();
    const Module module;
    const EffectCatalogue catalogue(module.effectLibrary());
    const EffectDescription& outline = catalogue.effect("outline");
    std::vector<EffectStage> chain{
        {ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(outline.index)), ParameterStore(outline)}};
    chain[0].parameters.apply(outline.preset("Solid Black"));
    chain[0].parameters.set("Color", "#FF0000");
    FrameBuffer source(64, 33, kFormatBgra8);
    std::memset(source.desc().data, 0, static_cast<std::size_t>(source.desc().stride) * 33);
    const std::uint8_t white[4] = {255, 255, 255, 255};
    std::memcpy(source.row(16) + 4 * 32, white, 4);
    FrameBuffer destination(64, 33, kFormatBgra8);
    Renderer(chain, kFormatBgra8, allocator.get()).render(source.desc(), destination.desc(), {});
    const std::uint8_t red[4] = {0, 0, 255, 255};
    EXPECT_EQ(std::memcmp(destination.row(16) + 4 * 32, white, 4), 0) << "the dot itself";
    EXPECT_EQ(std::memcmp(destination.row(16) + 4 * 30, red, 4), 0) << "the band around it";
    EXPECT_EQ(destination.row(16)[4 * 10 + 3], 0) << "far away";
}

TEST(Module, SaysWhatIsWrongWithAFileThatIsNone) {
    const auto complaint = [](const std::filesystem::path& path) -> std::string {
        try {
            const Module module(path);
        } catch (const ModuleError& error) {
            return error.what();
        }
        return {};
    };
    EXPECT_EQ(complaint("/nowhere/module.so"), "There is no effects module at /nowhere/module.so.");
    const std::filesystem::path text = std::filesystem::path(testing::TempDir()) / "lumiset_not_a_module.so";
    std::ofstream(text) << "text";
    EXPECT_NE(complaint(text).find("cannot be loaded"), std::string::npos) << complaint(text);
    std::filesystem::remove(text);
    EXPECT_NE(complaint("/lib/x86_64-linux-gnu/libm.so.6").find("does not export GetEffectsLibrary"),
              std::string::npos);
    ::setenv("LUMISET_MODULE", "/nowhere/else.so", 1);
    EXPECT_EQ(complaint({}), "There is no effects module at /nowhere/else.so.");
    ::unsetenv("LUMISET_MODULE");
}

TEST(Module, IsFoundFromTheFoldersOfProgramsAndPlugIns) {
    namespace fs = std::filesystem;
    const fs::path root = fs::path(testing::TempDir()) / "lumiset_module_places";
    fs::remove_all(root);
    const auto put = [&](const char* folder) {
        fs::create_directories(root / folder);
        const fs::path file = root / folder / "libvantrel_lumiset5.so";
        std::ofstream(file) << "module";
        return file;
    };
    fs::create_directories(root / "lib/frei0r-1");
    const fs::path program = root / "bin";
    const fs::path plugin = root / "lib/frei0r-1";
    EXPECT_THROW((void)findModule(program), ModuleError);

    const fs::path installed = put("lib/lumiset");
    EXPECT_EQ(findModule(program), installed);
    EXPECT_EQ(findModule(plugin), installed);
    const fs::path above = put("lib");
    EXPECT_EQ(findModule(plugin), above);
    EXPECT_EQ(findModule(program), installed);
    const fs::path beside = put("bin");
    EXPECT_EQ(findModule(program), beside);
    ::setenv("LUMISET_MODULE", "/nowhere/else.so", 1);
    EXPECT_EQ(findModule(program), "/nowhere/else.so");
    ::unsetenv("LUMISET_MODULE");
    fs::remove_all(root);
}

}  // namespace
}  // namespace lumiset::hostkit
