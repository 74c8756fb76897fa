// A clip as the finder of a video camera shows it: tinted or black and white, sharpened or coarse, with the marks of
// the camera over it. In order: colours, resolution, sharpening, lines (safe area, focus box), marks (record light,
// battery, counter). Where the marks stand is worked out once for both renderers (plan.h). The processor
// draws them from pictures that are scaled to the frame (camera_font.h); OpenGL, into which a module cannot load a
// picture, evaluates the strokes that the pictures were drawn from.

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/viewfinder/camera_font.h"
#include "effects/viewfinder/overlay.h"
#include "effects/viewfinder/passes.h"
#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kTintColor = 1,
    kTint,
    kBlackAndWhite,
    kSharpen,
    kResolution,
    kRecord = 8,
    kBattery,
    kSafeArea,
    kFocusBox,
    kCounter,
    kOutline,
    kHour = 16,
    kMinute,
    kSecond,
    kParamCount = 20
};

constexpr float kHourRange = 23.49F;
constexpr float kMinuteRange = 59.49F;

constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("Image", {0, 0, 0, 30}),
    colorParam("Tint", 0x000000, {11, 20, 198, 30}, "Sets the tint color"),
    sliderParam("Tint", 0.5F, {77, 20, 0, 30}, "Adjusts mix of tint", -100.0F),
    booleanParam("B/W", false, {11, 110, 100, 30}, "Turns the image black and white"),
    booleanParam("Sharpen", true, {110, 110, 100, 30}, "Sharpens the image"),
    sliderParam("Resolution", 1.0F, {143, 20, 0, 30}, "Sets how pixelated the image is"),
    groupClose("Image", {0, 0, 210, 140}),
    groupOpen("Overlay", {0, 170, 0, 0}),
    booleanParam("Record", true, {11, 165, 96, 10}, "Displays a blinking record light"),
    booleanParam("Battery", true, {11, 190, 96, 10}, "Displays a battery life indicator"),
    booleanParam("Safe Area", true, {11, 215, 96, 10}, "Displays the outer safe area indicator"),
    booleanParam("Focus Box", true, {110, 165, 132, 10}, "Displays the inner focus box indicator"),
    booleanParam("Counter", true, {110, 215, 132, 10}, "Displays the time code indicator"),
    booleanParam("Outline", true, {110, 190, 132, 10}, "Adds an outline to the image overlays"),
    groupClose("Overlay", {0, 145, 210, 100}),
    groupOpen("Counter", {0, 0, 100, 300}),
    sliderParam("Hour", 0.0F, {11, 270, 0, 30}, "Sets the initial value for Hour", 0.0F, kHourRange, false),
    sliderParam("Minute", 0.0F, {77, 270, 0, 30}, "Sets the initial value for Minutes", 0.0F, kMinuteRange, false),
    sliderParam("Second", 0.0F, {143, 270, 0, 30}, "Sets the initial value for Seconds", 0.0F, kMinuteRange, false),
    groupClose("Time Start", {0, 251, 210, 114}),
});
static_assert(kParams.size() == kParamCount);

/// A preset stores a value for each parameter index; those of group markers are never read.
constexpr auto row(const char* name, std::uint32_t tintColor, float tint, bool blackAndWhite, bool sharpen,
                   float resolution, bool record, bool battery, bool safeArea, bool focusBox, bool counter,
                   bool outline, float hour, float minute, float second) {
    constexpr ParamValue none{};
    return preset(name, none, colorValue(tintColor), sliderValue(tint), booleanValue(blackAndWhite),
                  booleanValue(sharpen), sliderValue(resolution), none, none, booleanValue(record),
                  booleanValue(battery), booleanValue(safeArea), booleanValue(focusBox), booleanValue(counter),
                  booleanValue(outline), none, none, sliderValue(hour), sliderValue(minute), sliderValue(second), none);
}

// clang-format off
constexpr PresetTable kPresets(
    //                   Tint      (mix)    B/W    Sharpen  Resolut.  Record  Battery  Safe Area  Focus Box  Counter  Outline  Hour  Minute  Second
    row("1980s",         0xFFFF80, 0.575F,  true,  false,   1.0F,     true,   true,    true,      false,     true,    true,    0.0F, 0.0F,   0.0F),
    row("1970s",         0x80FF80, 0.6402F, true,  true,    1.0F,     false,  false,   true,      true,      false,   true,    0.0F, 0.0F,   0.0F),
    row("1990s",         0x9F20DA, 0.3789F, false, true,    0.95F,    true,   true,    true,      true,      true,    false,   0.0F, 0.0F,   0.0F),
    row("2000s",         0xB81EB8, 0.5F,    false, false,   1.0F,     true,   true,    true,      true,      true,    true,    0.0F, 0.0F,   0.0F),
    row("Cheap Camera",  0x451EB8, 0.5F,    true,  true,    0.375F,   true,   true,    true,      true,      true,    false,   0.0F, 0.0F,   0.0F),
    row("Night Vision",  0x00FF00, 1.0F,    true,  true,    0.2601F,  false,  false,   false,     false,     false,   false,   0.0F, 0.0F,   0.0F),
    row("Pixelate",      0x451EB8, 0.5001F, false, false,   0.0F,     false,  false,   false,     false,     false,   false,   0.0F, 0.0F,   0.0F),
    row("Pixelvision",   0xFFFF80, 0.5F,    true,  false,   0.32F,    false,  false,   false,     true,      false,   false,   0.0F, 0.0F,   0.0F),
    row("Reset to None", 0x451EB8, 0.5001F, false, false,   1.0F,     false,  false,   false,     false,     false,   false,   0.0F, 0.0F,   0.0F),
    row("Simple",        0xFFFF80, 0.5F,    false, false,   1.0F,     true,   true,    false,     false,     false,   false,   0.0F, 0.0F,   0.0F),
    row("Weapon Site",   0x451EB8, 0.5F,    true,  true,    0.685F,   false,  false,   false,     true,      false,   false,   0.0F, 0.0F,   0.0F));
// clang-format on

using enum ViewfinderPasses::Program;

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kColorMatrixFrag},
    {shaders::kPassVert, shaders::kViewfinderGreyFrag},
    {shaders::kPassVert, shaders::kViewfinderPixelsFrag},
    {shaders::kPassVert, shaders::kSharpenFrag},
    {shaders::kPassVert, shaders::kFillValueFrag},
    {shaders::kPassVert, shaders::kViewfinderStrokesFrag},
    {shaders::kPassVert, shaders::kViewfinderOverlayFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Viewfinder",
    .flags = kFlagsEveryEffect | kFlagChangesAlpha | kFlagDependsOnTime,
    .params = kParams,
    .presets = kPresets,
    .needsTopDown = true,
    .mainProgram = &kPrograms[kOverlay],
};
static_assert(valid(kInfo));

/// Settings of the colour adjustment that leave the picture as it is.
constexpr float kNeutral = 0.5F;

ViewfinderSettings readSettings(const ParamReader& params) {
    const auto number = [&](std::uint32_t index, float range) {
        return static_cast<std::int32_t>(std::lround(params.slider(index) * range));
    };
    return {
        .tintColor = params.color(kTintColor),
        .tint = params.slider(kTint),
        .blackAndWhite = params.boolean(kBlackAndWhite),
        .sharpen = params.boolean(kSharpen),
        .resolution = params.slider(kResolution),
        .record = params.boolean(kRecord),
        .battery = params.boolean(kBattery),
        .safeArea = params.boolean(kSafeArea),
        .focusBox = params.boolean(kFocusBox),
        .counter = params.boolean(kCounter),
        .outline = params.boolean(kOutline),
        .startSeconds =
            number(kHour, kHourRange) * 3600 + number(kMinute, kMinuteRange) * 60 + number(kSecond, kMinuteRange),
    };
}

/// Rows that go through all steps of black and white while they are near.
constexpr std::int32_t kGreyRows = 8;

Bands greyParts(const FrameFacts& facts, const MemoryAllocator& allocator) {
    return bandsForThreads(&allocator, {facts.width, facts.height}, 1, kGreyRows);
}

std::int64_t greyBytes(const FrameFacts& facts, std::int32_t format) {
    return std::int64_t{kGreyRows} * facts.width * BytesPerChannel(format);
}

/// Black and white, in the tint's light where that is above its middle.
bool makeGrey(const Frame& source, Frame& destination, const ViewfinderSettings& settings,
              const RenderContext& context) {
    const auto [red, green, blue] = tintFactors(settings.tintColor, settings.tint);
    const std::int32_t format = source.Format();
    const std::int32_t alpha = AlphaIndex(format);
    const std::array<float, 4> factors =
        alpha == 0 ? std::array{1.0F, red, green, blue} : std::array{blue, green, red, 1.0F};
    const Bands parts = greyParts(context, context.allocator);
    const std::int64_t partBytes = greyBytes(context, format);
    ScratchBlock block(context.allocator);
    block.add<std::uint8_t>(parts.count() * partBytes);
    if (!block.allocate()) {
        return false;
    }
    auto* scratch = block.take<std::uint8_t>(parts.count() * partBytes);
    runTasks(&context.allocator, parts.count(), [&](std::int32_t part) {
        Frame grey;
        grey.Wrap(scratch + part * partBytes, source.Width(), kGreyRows, source.Width() * BytesPerChannel(format),
                  BytesPerChannel(format), MaskFormat(format), false);
        const std::int32_t end = parts.first(part) + parts.rowsOf(part);
        for (std::int32_t y = parts.first(part); y < end; y += kGreyRows) {
            const std::int32_t rows = std::min(kGreyRows, end - y);
            FrameRows from(source, y, rows);
            FrameRows to(destination, y, rows);
            FrameToLuma(from, grey);
            FrameSpreadGrayToColor(grey, to);
            if (settings.tint > kNeutral) {
                FrameMultiplyColor(to, to, factors.data());
            }
            FrameCopyChannel(from, to, alpha, alpha);
        }
    });
    return true;
}

/// Resizes to the nearest pixels. Positions half way between two take the second, whatever the division loses: a
/// millionth of a pixel is far less than any other position lies from there.
bool resizeToNearest(const Frame& source, Frame& destination) {
    constexpr double kHalfWay = -1e-6;
    return FrameResizeRect(source, destination, {0, 0, source.Width(), source.Height()},
                           {0, 0, destination.Width(), destination.Height()}, kResizeNearest, 0, 0, kHalfWay, kHalfWay);
}

/// Reduces the picture to a coarse grid of its pixels.
bool pixelate(Frame& frame, const CellSize& grid, MemoryAllocator& allocator) {
    Frame coarse;
    return coarse.Allocate(grid.width, grid.height, frame.BytesPerPixel(), &allocator, frame.Format(), false) &&
           resizeToNearest(frame, coarse) && resizeToNearest(coarse, frame);
}

/// What the steps take from the reserve, one after the other.
std::int64_t scratchBytes(const ViewfinderSettings& settings, const CellSize& grid, const RenderContext& context,
                          std::int32_t format) {
    const ImgSize size{context.width, context.height};
    const std::int32_t pixelBytes = formatBytesPerPixel(format);
    std::int64_t bytes = 0;
    if (settings.blackAndWhite) {
        bytes = ScratchBlock::reserveFor(greyParts(context, context.allocator).count() * greyBytes(context, format));
    }
    if (grid.height < context.height) {
        const ImgSize coarse{grid.width, grid.height};
        const auto resize = [&](ImgSize from, ImgSize to) {
            return ScratchBlock::reserveFor(FrameResizeScratch(from, to, 4, kResizeNearest, context.allocator));
        };
        bytes = std::max(bytes, MemoryAllocator::ReserveForImage(grid.width, grid.height, pixelBytes) +
                                    std::max(resize(size, coarse), resize(coarse, size)));
    }
    if (settings.sharpen) {
        bytes = std::max(bytes, ScratchBlock::reserveFor(FrameSharpenScratch(size, pixelBytes, context.allocator)));
    }
    return bytes;
}

struct ReleaseFont {
    void operator()(CCameraFont* font) const { font->Release(); }
};
using HeldFont = std::unique_ptr<CCameraFont, ReleaseFont>;

class CViewfinder final : public Effect {
public:
    CViewfinder() : Effect(kInfo) {}

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;

private:
    ~CViewfinder() override;

    /// A font of that size with a reference for the caller; null when there is none.
    CCameraFont* fontOf(const FontSize& size) noexcept;

    std::mutex m_lock;  // held to look at the font or to replace it, never while a font is made or drawn
    CCameraFont* m_font = nullptr;
};

CViewfinder::~CViewfinder() {
    if (m_font != nullptr) {
        m_font->Release();
    }
}

CCameraFont* CViewfinder::fontOf(const FontSize& size) noexcept {
    {
        const std::scoped_lock lock(m_lock);
        if (m_font != nullptr && m_font->size() == size) {
            m_font->AddRef();
            return m_font;
        }
    }
    // Threads that need a new font at once make it twice rather than wait for each other.
    CCameraFont* made = CCameraFont::create(size);
    if (made == nullptr) {
        return nullptr;
    }
    made->AddRef();
    CCameraFont* old = nullptr;
    {
        const std::scoped_lock lock(m_lock);
        old = std::exchange(m_font, made);
    }
    if (old != nullptr) {
        old->Release();
    }
    return made;
}

bool CViewfinder::Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                         Frame& destination) noexcept {
    const ViewfinderSettings settings = readSettings(params);
    const CellSize grid = resolutionGrid(settings.resolution, context.width, context.height);
    const OverlayPlan plan = planOverlay(settings, context);
    // A font of no height has no marks to draw.
    const bool needsFont = plan.markCount != 0 && plan.font.height >= 1;
    const HeldFont font(needsFont ? fontOf(plan.font) : nullptr);
    const std::int64_t scratch = scratchBytes(settings, grid, context, source.Format());
    if ((needsFont && font == nullptr) || (scratch > 0 && !context.allocator.Reserve(scratch))) {
        return false;
    }
    bool done = settings.blackAndWhite ? makeGrey(source, destination, settings, context)
                                       : ColorAdjust(source, destination, kNeutral, kNeutral, kNeutral, kNeutral,
                                                     settings.tintColor, settings.tint, &context.allocator);
    if (grid.height < context.height) {
        done = done && pixelate(destination, grid, context.allocator);
    }
    for (int i = 0; settings.sharpen && i < 2; ++i) {
        done = done && FrameSharpen(destination, destination, &context.allocator);
    }
    drawOverlay(destination, plan, font.get());
    return done;
}

bool CViewfinder::RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const ViewfinderSettings settings = readSettings(params);
    const OverlayPlan plan = planOverlay(settings, facts);
    if (!frame.create(plan.isEmpty() ? 2 : 3, kPrograms)) {
        return false;
    }
    ViewfinderPasses passes(frame);
    if (settings.blackAndWhite) {
        passes.makeGrey(settings);
    } else {
        float matrix[3][4];
        BuildColorMatrix(kNeutral, kNeutral, kNeutral, kNeutral, settings.tintColor, settings.tint, kFormatBgraFloat,
                         matrix, true);
        passes.adjustColor(kColor, matrix);
    }
    const CellSize grid = resolutionGrid(settings.resolution, facts.width, facts.height);
    if (grid.height < facts.height) {
        passes.draw(kPixels, [&](ShaderProgram& program) {
            program.SetFloat2("grid", static_cast<float>(grid.width), static_cast<float>(grid.height));
        });
    }
    for (int i = 0; settings.sharpen && i < 2; ++i) {
        passes.draw(kSharpenPicture, [](ShaderProgram&) {});
    }
    if (!plan.isEmpty()) {
        passes.drawOverlay(plan);
    }
    return frame.finish(passes.picture());
}

}  // namespace

IVideoGPUEffect* makeViewfinder() noexcept {
    return new (std::nothrow) CViewfinder;
}

}  // namespace lumiset
