#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <thread>

#include "apps/lumiset/validate/check.h"
#include "apps/lumiset/validate/host.h"
#include "hostkit/module.h"

namespace lumiset::app::validate {
namespace {

using hostkit::Module;

constexpr std::uint32_t kDependsOnTime = 0x4000;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Renders random 8-bit and float pictures of one effect.
class Renders {
public:
    Renders(const Subject& subject, const Effect& effect, std::int32_t format, std::int32_t width = 40,
            std::int32_t height = 28)
        : m_effect(effect), m_source(width, height, {.format = format}) {
        std::mt19937 random = subject.random();
        m_source.draw(random);
    }
    [[nodiscard]] std::vector<std::uint32_t> operator()(const std::vector<ParamValue>& values,
                                                        const FrameRenderInfo& info = wholeFrame(1.25)) const {
        Picture result(m_source.width(), m_source.height(),
                       {.format = static_cast<std::int32_t>(m_source.desc().format)});
        renderWell(m_effect, values, m_source, result, info);
        if (!result.isFinite()) {
            throw Broken(m_effect.name + ": a sample is no finite number.");
        }
        return result.samples();
    }
    [[nodiscard]] const Picture& source() const { return m_source; }

private:
    const Effect& m_effect;
    Picture m_source;
};

/// A value that no panel gives, and what it has to count as; returns how many there are of a type.
std::size_t hostileValue(const ParamInfo& info, std::size_t number, ParamValue& hostile, ParamValue& safe) {
    static constexpr float kHostile[] = {kNan, kInfinity, -kInfinity, -5.0F, 7.0F};
    const auto count = std::size(kHostile);
    hostile = safe = info.defaultValue;
    const auto clamped = [&](float value, float fallback) {
        return value != value ? fallback : std::clamp(value, 0.0F, 1.0F);
    };
    const float value = kHostile[number % count];
    if (info.type == kParamSlider) {
        hostile.slider = value;
        safe.slider = clamped(value, info.defaultValue.slider);
        return count;
    }
    if (info.type == kParamPoint) {
        hostile.point = {value, value};
        safe.point = {clamped(value, info.defaultValue.point.x), clamped(value, info.defaultValue.point.y)};
        return count;
    }
    if (info.type == kParamChoice) {
        hostile.choice = number == 0 ? info.itemCount : 0xFFFFFFFFU;
        safe.choice = 0;
        return 2;
    }
    if (info.type == kParamBoolean) {
        hostile.words[0] = number == 0 ? 0xFFFFFF00U : 2U;
        safe.words[0] = number == 0 ? 0 : 1;
        return 2;
    }
    return 0;
}

void checkValues(const Subject& subject) {
    const Module module(subject.module);
    std::mt19937 random = subject.random();
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        const std::int32_t format = kFormats[random() % std::size(kFormats)];
        const Renders renders(subject, effect, format);
        for (std::uint32_t preset = 0; preset < std::max(effect.presets, 1U); ++preset) {
            for (std::uint32_t index = 0; index < effect.params.size(); ++index) {
                std::vector<ParamValue> hostile = effect.valuesOf(preset);
                std::vector<ParamValue> safe = hostile;
                const auto number = static_cast<std::size_t>(random() % 10);
                const std::size_t count = hostileValue(effect.params[index], number, hostile[index], safe[index]);
                if (count == 0) {
                    continue;
                }
                hostileValue(effect.params[index], number % count, hostile[index], safe[index]);
                if (renders(hostile) != renders(safe)) {
                    throw Broken(fmt::format("{}: {}, out of range, is not made safe.",
                                             where(effect, preset, renders.source()), effect.params[index].label));
                }
            }
        }
        for (const float value : {kNan, kInfinity, -kInfinity, -5.0F, 7.0F}) {
            std::vector<ParamValue> all = effect.valuesOf(0);
            for (ParamValue& each : all) {
                each.point = {value, value};
            }
            (void)renders(all);
        }
    }
}

void checkTimes(const Subject& subject) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        const Renders renders(subject, effect, kFormatBgra8);
        for (std::uint32_t preset = 0; preset < std::max(effect.presets, 1U); ++preset) {
            const std::vector<ParamValue> values = effect.valuesOf(preset);
            const auto begin = renders(values, wholeFrame(0.0));
            for (const double none : {-1.0, -1e300, double{kNan}, double{kInfinity}, -double{kInfinity}}) {
                if (renders(values, wholeFrame(none)) != begin) {
                    throw Broken(fmt::format("{}: time {} is not the beginning.",
                                             where(effect, preset, renders.source()), none));
                }
            }
            const bool moves = (effect.object->GetEffectFlags() & kDependsOnTime) != 0;
            for (const double late : {0.04, 3600.0, 1e9, 1e300}) {
                if (renders(values, wholeFrame(late)) != begin && !moves) {
                    throw Broken(fmt::format("{}: its picture changes with time, its flags do not say so.",
                                             where(effect, preset, renders.source())));
                }
            }
        }
    }
}

void checkOrder(const Subject& subject) {
    const Module module(subject.module);
    std::vector<Effect> effects = effectsOf(module.effectLibrary());
    struct Frame {
        const Effect* effect;
        std::uint32_t preset;
        std::int32_t format;
        double time;
        std::vector<std::uint32_t> result;
    };
    std::vector<Frame> frames;
    for (const Effect& effect : effects) {
        for (std::uint32_t i = 0; i < std::max(effect.presets, 1U) * 2; ++i) {
            frames.push_back({&effect, i / 2, kFormats[i % std::size(kFormats)], 0.3 * i, {}});
        }
    }
    const auto rendered = [&](const Frame& frame) {
        return Renders(subject, *frame.effect, frame.format)(frame.effect->valuesOf(frame.preset),
                                                             wholeFrame(frame.time));
    };
    for (Frame& frame : frames) {
        frame.result = rendered(frame);
    }
    const auto expectAgain = [&](const char* how) {
        for (const Frame& frame : frames) {
            if (rendered(frame) != frame.result) {
                throw Broken(fmt::format("{}, preset {} at {} s is another picture {}.", frame.effect->name,
                                         frame.preset, frame.time, how));
            }
        }
    };
    expectAgain("the second time");
    std::mt19937 random = subject.random();
    std::shuffle(frames.begin(), frames.end(), random);
    expectAgain("in another order");
}

void checkThreads(const Subject& subject) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        const Renders renders(subject, effect, kFormatBgra8);
        constexpr std::size_t kThreads = 8;
        std::vector<std::vector<std::uint32_t>> expected;
        for (std::size_t i = 0; i < kThreads; ++i) {
            expected.push_back(renders(effect.valuesOf(static_cast<std::uint32_t>(i) % std::max(effect.presets, 1U)),
                                       wholeFrame(0.2 * static_cast<double>(i))));
        }
        std::vector<std::string> findings(kThreads);
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                try {
                    for (int repeat = 0; repeat < 6 && findings[i].empty(); ++repeat) {
                        const auto preset = static_cast<std::uint32_t>(i) % std::max(effect.presets, 1U);
                        if (renders(effect.valuesOf(preset), wholeFrame(0.2 * static_cast<double>(i))) != expected[i]) {
                            findings[i] =
                                where(effect, preset, renders.source()) + ": other threads show in the picture.";
                        }
                    }
                } catch (const std::exception& error) {
                    findings[i] = error.what();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const std::string& finding : findings) {
            if (!finding.empty()) {
                throw Broken(finding);
            }
        }
    }
}

/// One render with a host that lends memory and fails as told.
struct Attempt {
    bool done;
    int allocations;
    std::vector<std::uint8_t> bytes;
};
Attempt attempt(const Effect& effect, const std::vector<ParamValue>& values, const Picture& source, int failAt,
                bool failsOn, std::uint8_t fresh) {
    Host host(effect, values);
    host.lends = true;
    host.failAt = failAt;
    host.failsOn = failsOn;
    host.fresh = fresh;
    Picture result(source.width(), source.height(), {.format = static_cast<std::int32_t>(source.desc().format)});
    result.fill(0x3C);
    const FrameRenderInfo info = wholeFrame(1.25);
    const bool done = render(effect, host, source, result, &info);
    return {done, host.allocations, result.bytes()};
}

void checkMemory(const Subject& subject) {
    const Module module(subject.module);
    for (const Effect& effect : effectsOf(module.effectLibrary())) {
        for (const std::int32_t format : {kFormatBgra8, kFormatBgraFloat}) {
            Picture source(40, 30, {.format = format});
            std::mt19937 random = subject.random();
            source.draw(random);
            Picture untouched(40, 30, {.format = format});
            untouched.fill(0x3C);
            for (std::uint32_t preset = 0; preset < std::max(effect.presets, 1U); ++preset) {
                const std::vector<ParamValue> values = effect.valuesOf(preset);
                Picture plain(40, 30, {.format = format});
                renderWell(effect, values, source, plain);
                const Attempt all = attempt(effect, values, source, Host::kNever, false, 0xA5);
                const auto broken = [&](const std::string& what) {
                    throw Broken(where(effect, preset, source) + ": " + what);
                };
                if (!all.done || all.bytes != plain.bytes()) {
                    broken("with memory of the host's it is another picture.");
                }
                for (int failAt = 0; failAt < 2 * std::min(all.allocations, 300); ++failAt) {
                    const auto one = [&](std::uint8_t fresh) {
                        return attempt(effect, values, source, failAt / 2, failAt % 2 == 1, fresh);
                    };
                    const Attempt first = one(0xA5);
                    if (!first.done && first.bytes != untouched.bytes()) {
                        broken(fmt::format("without allocation {} it fails, but has written.", failAt / 2));
                    }
                    if (const Attempt second = one(0x5A); second.done != first.done || second.bytes != first.bytes) {
                        broken(fmt::format("without allocation {} unwritten memory shows.", failAt / 2));
                    }
                }
            }
        }
    }
}

constexpr Check kHostChecks[] = {
    {"values", "Values that are no numbers, out of range or past a list's end are made safe.", checkValues},
    {"times", "Times before the beginning and no times at all are the beginning; only effects that say so move.",
     checkTimes},
    {"order", "A frame is the same picture whenever it is rendered, and whatever was rendered before it.", checkOrder},
    {"threads", "Frames rendered on many threads at once are the pictures that one thread renders.", checkThreads},
    {"memory", "Where memory runs out a frame fails without a byte written, or what is shown was written.",
     checkMemory},
};

}  // namespace

std::span<const Check> hostChecks() {
    return kHostChecks;
}

}  // namespace lumiset::app::validate
