// Keeps up to two chosen colours of the picture and drains the rest to grey. A chroma key by acceptance angle gives
// a mask for each colour; many passes of a small filter soften it; what both masks cover turns grey, as far as
// Strength says. The masks can be shown instead, painted in the chosen colours.
//
// In 8 bits the key works in whole numbers, and every pass of the filter rounds: after some hundred and fifty passes
// the slopes are so gentle that rounding keeps them. So the OpenGL renderer runs at most that many passes for 8-bit
// frames. For float frames many passes are one wide separable filter of binomial weights.

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <span>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/picture_passes.h"
#include "effects/selective_color/key.h"
#include "effects/unit_color.h"
#include "frame/bands.h"
#include "frame/filters/repeated_gauss.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "frame/rows.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kFirstGroup,
    kFirstTint,
    kFirstRange,
    kFirstGroupEnd,
    kSecondGroup,
    kSecondTint,
    kSecondRange,
    kSecondGroupEnd,
    kSoften,
    kStrength,
    kShowMasks,
    kParamCount
};

constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("First Color", {0, 40, 0, 30}),
    colorParam("Tint", 0x4656B0, {11, 10, 0, 30}, "Sets the primary color to be isolated"),
    sliderParam("Range", 0.5001F, {77, 10, 0, 30}, "Adjusts the hue range to remain visible"),
    groupClose("First Color", {0, -8, 134, 110}),
    groupOpen("Second Color", {0, 170, 0, 30}),
    colorParam("Tint", 0xFEC27D, {11, 125, 0, 30}, "Sets the secondary color to be isolated"),
    sliderParam("Range", 0.5001F, {77, 125, 0, 30}, "Adjusts the hue range to remain visible"),
    groupClose("Second Color", {0, 107, 134, 110}),
    sliderParam("Soften", 0.5001F, {147, 10, 0, 30}, "Blurs the boundaries between selected colors and rest of image"),
    sliderParam("Strength", 0.705F, {147, 125, 66, 30}, "Sets how strong the effect is"),
    booleanParam("Show Masks", false, {9, 230, 114, 10}, "Show the image as a black and white mask"),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, std::uint32_t firstTint, float firstRange, std::uint32_t secondTint,
                   float secondRange, float soften, float strength, bool showMasks) {
    return preset(name, colorValue(firstTint), sliderValue(firstRange), colorValue(secondTint),
                  sliderValue(secondRange), sliderValue(soften), sliderValue(strength), booleanValue(showMasks));
}

constexpr PresetTable kPresets(  //
    row("Bleak", 0x2D2C54, 0.085F, 0x00FFFF, 0.075F, 0.4851F, 1.0F, false),
    row("Blue Skies and Green Trees", 0xFF8000, 0.6001F, 0x408000, 0.3501F, 0.1403F, 1.0F, false),
    row("Dull Day", 0xE7C7B0, 0.0F, 0x16D0FF, 0.0F, 0.3501F, 0.555F, false),
    row("Flesh Tones", 0x7085AA, 0.2501F, 0xFFFFFF, 0.0F, 0.2501F, 1.0F, false),
    row("Grainy Colors", 0x000000, 0.0F, 0x000000, 0.0F, 0.0F, 1.0F, false),
    row("Just Blue", 0xFF0000, 0.76F, 0x000000, 0.0F, 0.5001F, 1.0F, false),
    row("Just Green", 0x00FF00, 0.74F, 0x000000, 0.0F, 0.1501F, 1.0F, false),
    row("Just Red", 0x0000FF, 0.4401F, 0x000000, 0.0F, 0.3501F, 1.0F, false),
    row("Nature", 0x40FF00, 0.725F, 0x4A83D3, 0.235F, 0.4851F, 0.72F, false),
    row("Reset to None", 0x3F451EB8, 0.0F, 0x000000, 0.0F, 0.0F, 0.0F, false),
    row("Sunset", 0xE7C7B0, 0.0F, 0x1A64FF, 0.25F, 0.3951F, 1.0F, false));

enum Program : std::size_t { kKey, kSoftenOnce, kSoftenWidely, kDrain, kMaskView, kBothMasksView, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kSelectiveColorKeyFrag},
    {shaders::kPassVert, shaders::kSoftenOnceFrag},
    {shaders::kPassVert, shaders::kSoftenWidelyFrag},
    {shaders::kPassVert, shaders::kSelectiveColorDrainFrag},
    {shaders::kPassVert, shaders::kSelectiveColorMaskFrag},
    {shaders::kPassVert, shaders::kSelectiveColorMasksFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Selective Color",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kKey],
};
static_assert(valid(kInfo));

constexpr std::int32_t kMaskBorder = 3;  ///< pixels at each edge of a mask that repeat the one inside them

/// A chosen colour.
struct Choice {
    std::uint32_t tint;
    float range;
};

/// One or two colours to keep. A colour whose range is 0 is not chosen, unless both are: then the second is.
struct Choices {
    bool useFirst;
    bool useSecond;
    Choice first;
    Choice second;
};

Choices readChoices(const ParamReader& params) {
    const Choice first{params.color(kFirstTint), params.slider(kFirstRange)};
    const Choice second{params.color(kSecondTint), params.slider(kSecondRange)};
    const bool useFirst = first.range != 0.0F;
    return {useFirst, !useFirst || second.range != 0.0F, first, second};
}

/// Passes of the filter, which grow with the picture's area.
std::int32_t softenPasses(float soften, const FrameFacts& facts) {
    constexpr double kMost = 1e9;
    const double passes = static_cast<double>(soften) * 0.0003 * facts.height * facts.height;
    return static_cast<std::int32_t>(std::min(passes * (facts.fieldMode ? 2.0 : 1.0), kMost));
}

bool hasMaskBorder(const FrameFacts& facts) {
    return facts.width > 2 * kMaskBorder && facts.height > 2 * kMaskBorder;
}

bool makeMask(const Frame& source, const RenderContext& context, const Choice& choice, Frame& mask) {
    if (!mask.Allocate(context.width, context.height, BytesPerChannel(source.Format()), &context.allocator,
                       MaskFormat(source.Format()), source.Flipped())) {
        return false;
    }
    keyMask(source, mask, colorKey(choice.tint, choice.range, !isFloatFormat(source.Format())));
    return true;
}

/// Without memory a mask stays hard.
void softenMasks(std::span<Frame* const> masks, std::int32_t passes, const RenderContext& context) {
    std::array<RepeatedGaussJob, kMostGaussJobs> jobs{};
    for (std::size_t i = 0; i < masks.size(); ++i) {
        const Frame& mask = *masks[i];
        jobs[i] = {mask.Data(), mask.Stride(), mask.Width(), mask.Height(), passes, isFloatFormat(mask.Format())};
    }
    repeatedGauss(std::span(jobs).first(masks.size()), context.allocator);
    for (std::size_t i = 0; i < masks.size(); ++i) {
        if (jobs[i].filtered && hasMaskBorder(context)) {
            FrameReplicateBorder(*masks[i], *masks[i], kMaskBorder, kMaskBorder);
        }
    }
}

/// Shows what is kept in the colours that were chosen, mixed where both are, on black.
void showMasks(const Frame& firstMask, const Frame& secondMask, const Choice& first, const Choice& second,
               Frame& destination) {
    const auto showRow = [&](auto layout, std::int32_t, auto* out, const auto* firstRow, const auto* secondRow) {
        using L = decltype(layout);
        using Sample = typename L::Sample;
        constexpr float kFull = L::kIsFloat ? 1.0F : 255.0F;
        constexpr int kPositions[3] = {L::kRed, L::kGreen, L::kBlue};
        for (std::int32_t x = 0; x < destination.Width(); ++x, out += 4) {
            const float a = kFull - static_cast<float>(firstRow[x]);
            const float b = kFull - static_cast<float>(secondRow[x]);
            const float share = a + b > 0.0F ? a / (a + b) : 0.0F;
            const float brightness = std::max({a, b, 0.0F}) / kFull;
            for (std::uint32_t i = 0; i < 3; ++i) {
                const auto part = [&](std::uint32_t color) {
                    return static_cast<float>((color >> (8 * i)) & 0xFFU) / 255.0F * kFull;
                };
                const float value = (part(first.tint) * share + part(second.tint) * (1.0F - share)) * brightness;
                out[kPositions[i]] = static_cast<Sample>(L::kIsFloat ? value : value + 0.5F);
            }
            out[L::kAlpha] = static_cast<Sample>(kFull);
        }
    };
    visitRows(destination.Format(), destination, showRow, firstMask, secondMask);
}

/// Turns the source grey where the mask, or each of two, covers it; its alpha stays. The steps follow each other in
/// rows few enough to stay in the processor's cache.
bool drain(const Frame& source, Frame& mask, Frame* otherMask, float strength, const RenderContext& context,
           Frame& destination) {
    const std::int32_t alpha = AlphaIndex(source.Format());
    Frame brightness;
    if (otherMask == nullptr && !brightness.Allocate(mask.Width(), mask.Height(), mask.BytesPerPixel(),
                                                     &context.allocator, mask.Format(), mask.Flipped())) {
        return false;
    }
    // The other mask has served when the brightness is due.
    const Frame& wholeLuma = otherMask != nullptr ? *otherMask : brightness;
    const auto work = [&](std::int32_t y, std::int32_t rows) {
        FrameRows from(source, y, rows);
        FrameRows to(destination, y, rows);
        FrameRows cover(mask, y, rows);
        FrameRows luma(wholeLuma, y, rows);
        if (otherMask != nullptr) {
            FrameMinOf(cover, luma, cover);
        }
        FrameToLuma(from, luma);
        FrameClampValues(cover, 0.0F, strength);
        FrameSpreadGrayToColor(luma, to);
        FrameCopyChannel(cover, to, 0, alpha);
        FrameAlphaOver(to, from, to, false);
        return FrameCopyChannel(from, to, alpha, alpha);
    };
    return inCachedRows(&context.allocator, {context.width, context.height}, source.Stride(), work);
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const Choices choices = readChoices(params);
    const std::int32_t passes = softenPasses(params.slider(kSoften), context);
    Frame first;
    Frame second;
    if ((choices.useFirst && !makeMask(source, context, choices.first, first)) ||
        (choices.useSecond && !makeMask(source, context, choices.second, second))) {
        return false;
    }
    const bool both = choices.useFirst && choices.useSecond;
    Frame* const masks[] = {choices.useFirst ? &first : &second, &second};
    softenMasks(std::span(masks).first(both ? 2 : 1), passes, context);
    if (params.boolean(kShowMasks)) {
        // One colour alone is mixed with itself.
        const Frame& shownFirst = choices.useFirst ? first : second;
        const Frame& shownSecond = choices.useSecond ? second : first;
        showMasks(shownFirst, shownSecond, choices.useFirst ? choices.first : choices.second,
                  choices.useSecond ? choices.second : choices.first, destination);
        return true;
    }
    return drain(source, choices.useFirst ? first : second, both ? &second : nullptr, params.slider(kStrength), context,
                 destination);
}

/// The steps in OpenGL: the masks of both colours, in red and green, go from one temporary to the other. One colour
/// alone is both.
class MaskPasses : public PicturePasses {
public:
    using PicturePasses::PicturePasses;

    void findKeys(const Choice& first, const Choice& second) {
        m_frame.pass(kKey, m_frame.source(), *m_current, [&](ShaderProgram& program) {
            const ColorKey a = colorKey(first.tint, first.range, !m_isFloat);
            const ColorKey b = colorKey(second.tint, second.range, !m_isFloat);
            const auto slope = [](const ColorKey& key) {
                return key.keepsWholeWedge ? 0.0F : 255.0F / (key.radius - key.level);
            };
            program.SetFloat2("fKeyY", a.keyY, b.keyY);
            program.SetFloat2("fKeyCb", a.cosine / 128.0F, b.cosine / 128.0F);
            program.SetFloat2("fKeyCr", a.sine / 128.0F, b.sine / 128.0F);
            program.SetFloat2("fKeyGL", a.radius, b.radius);
            program.SetFloat2("fAcceptAngleTg", a.tangent / 16.0F, b.tangent / 16.0F);
            program.SetFloat2("fAcceptAngleCtg", a.cotangent / 16.0F, b.cotangent / 16.0F);
            program.SetFloat("fNoiseLevel", kKeyNoise);
            program.SetFloat2("fValue", a.level, b.level);
            program.SetFloat("fAngleRC", kKeyLargestDetour);
            program.SetFloat2("fValueRC", slope(a), slope(b));
            setWholeLevels(program);
        });
    }

    void soften(std::int32_t passes) {
        constexpr std::int32_t kMostBytePasses = 160;   // what later passes of bytes change is not seen
        constexpr std::int32_t kMostSinglePasses = 16;  // more are done at once
        std::int32_t left = m_isFloat ? passes : std::min(passes, kMostBytePasses);
        // Halves of what is left: at the border, whose ring stays as it is, one wide filter is only nearly right, and
        // what it misses is mended by those that follow.
        while (m_isFloat && left > kMostSinglePasses) {
            const std::int32_t atOnce = (left + 1) / 2;
            left -= atOnce;
            softenAtOnce(atOnce);
        }
        for (; left > 0; --left) {
            draw(kSoftenOnce, [this](ShaderProgram& program) { setWholeLevels(program); });
        }
    }

    /// What the masks leave free, in the colours.
    void show(const Choice& first, const Choice& second, bool both, float border) {
        const auto setColor = [](ShaderProgram& program, const char* name, std::uint32_t color) {
            const auto [red, green, blue] = unitColor(color);
            program.SetFloat3(name, red, green, blue);
        };
        draw(both ? kBothMasksView : kMaskView, [&](ShaderProgram& program) {
            program.SetFloat("border", border);
            if (both) {
                setColor(program, "color1", first.tint);
                setColor(program, "color2", second.tint);
            } else {
                setColor(program, "color", first.tint);
            }
        });
    }

    /// The source, grey where the masks cover it.
    void drainSource(float strength, float border) {
        m_frame.pass(kDrain, {m_frame.source(), *m_current}, *m_other, [&](ShaderProgram& program) {
            program.SetFloat("border", border);
            program.SetFloat("strength", m_isFloat ? strength : std::floor(strength * 255.0F) / 255.0F);
        });
        swap();
    }

private:
    /// So many passes as one separable filter of the weights C(2n, n + d) / 4^n of the samples at distance d.
    void softenAtOnce(std::int32_t passes) {
        constexpr double kReach = 5.0;  // standard deviations of the filter
        const double n = passes;
        const double centre = std::exp(std::lgamma(2.0 * n + 1.0) - 2.0 * std::lgamma(n + 1.0) - n * std::log(4.0));
        const auto taps = static_cast<std::int32_t>(std::min(std::ceil(kReach * std::sqrt(n / 2.0)), n));
        for (const float along : {0.0F, 1.0F}) {
            draw(kSoftenWidely, [&](ShaderProgram& program) {
                program.SetFloat2("axis", along, 1.0F - along);
                program.SetFloat("passes", static_cast<float>(passes));
                program.SetFloat("centreWeight", static_cast<float>(centre));
                program.SetInt("taps", taps);
            });
        }
    }

    void setWholeLevels(ShaderProgram& program) const { program.SetInt("wholeLevels", m_isFloat ? 0 : 1); }

    const bool m_isFloat = isFloatFormat(m_frame.source().format);
};

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const Choices choices = readChoices(params);
    if (!frame.create(2, kPrograms)) {
        return false;
    }
    const Choice first = choices.useFirst ? choices.first : choices.second;
    const Choice second = choices.useSecond ? choices.second : choices.first;
    const float border = hasMaskBorder(facts) ? static_cast<float>(kMaskBorder) : 0.0F;
    MaskPasses masks(frame);
    masks.findKeys(first, second);
    masks.soften(softenPasses(params.slider(kSoften), facts));
    if (params.boolean(kShowMasks)) {
        masks.show(first, second, choices.useFirst && choices.useSecond, border);
    } else {
        masks.drainSource(params.slider(kStrength), border);
    }
    return frame.finish(masks.picture());
}

using CSelectColor = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeSelectiveColor() noexcept {
    return new (std::nothrow) CSelectColor;
}

}  // namespace lumiset
