#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <new>
#include <optional>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/moment.h"
#include "apps/lumiset/render/output_guard.h"
#include "apps/lumiset/render/progress.h"
#include "apps/lumiset/usage_error.h"
#include "hostkit/host_allocator.h"
#include "hostkit/look_files.h"
#include "hostkit/thread_pool.h"
#include "media/sheet.h"
#include "render/ordered_pipeline.h"
#include "render/picture_frame.h"

namespace lumiset::app {
namespace {

constexpr const char* kGalleryIntroduction =
    R"(Draws a sheet with every preset of EFFECT on one picture of INPUT, the picture as it is first.

INPUT is whatever "lumiset render" reads: an image, a sequence, a video, "-" or "scene". With --effect in place of
EFFECT the sheet shows those settings instead, one picture for each --effect; --look likewise, and --looks all looks.
)";

constexpr const char* kGalleryFooter = R"(
Examples:
  lumiset gallery "Old TV" clip.mp4 old_tv.png
  lumiset gallery Outline title.mov glow.png --time 1:20 --columns 3 --tile 480
  lumiset gallery scene some.png -e Outline -p "Red Glow" -e Outline -p "Red Glow" --set Width=10 -e "Old TV" -p Snow
  lumiset gallery --looks clip.mp4 looks.png)";

/// One picture of the sheet beside the source.
struct Tile {
    std::string label;
    std::vector<hostkit::EffectStage> chain;
};

struct Gallery {
    std::string title;
    bool movesWithTime = false;
    std::vector<Tile> tiles;
};

struct Job {
    std::size_t tile = 0;
    media::Picture result;
};

Gallery everyPreset(Program& program, const std::string& name) {
    const hostkit::EffectDescription& effect = program.catalogue().effect(name);
    const auto object = hostkit::ComPtr<IVideoGPUEffect>::adopt(program.effectLibrary().CreateEffect(effect.index));
    if (!object) {
        throw std::bad_alloc();
    }
    Gallery gallery{effect.name, effect.dependsOnTime(), {}};
    for (const hostkit::PresetDescription& preset : effect.presets) {
        hostkit::ParameterStore parameters(effect);
        parameters.apply(preset);
        gallery.tiles.push_back({preset.uniqueName, {{object, std::move(parameters)}}});
    }
    return gallery;
}

bool movesWithTime(const std::vector<hostkit::EffectStage>& chain) {
    return std::any_of(chain.begin(), chain.end(), [](const hostkit::EffectStage& stage) {
        const auto& parameters = stage.parameters.effect().parameters;
        return stage.parameters.effect().dependsOnTime() ||
               std::any_of(parameters.begin(), parameters.end(),
                           [&](const auto& parameter) { return stage.parameters.hasKeys(parameter); });
    });
}

std::string labelOf(const hostkit::EffectCatalogue& catalogue, const EffectRequest& request) {
    std::string label;
    if (!request.look.empty()) {
        label = hostkit::findLook(catalogue, request.look).look.name;
    } else {
        const hostkit::EffectDescription& effect = catalogue.effect(request.name);
        label = effect.name;
        if (!request.preset.empty()) {
            label += ": " + effect.preset(request.preset).uniqueName;
        } else if (!request.presetFile.empty()) {
            label += ": " + request.presetFile.substr(request.presetFile.rfind('/') + 1);
        }
    }
    for (const EffectRequest::Setting& setting : request.settings) {
        label += ", " + setting.label + "=" + setting.value;
    }
    return label;
}

Gallery chosenSettings(Program& program, const std::vector<EffectRequest>& requests, const std::string& input) {
    Gallery gallery{requests.size() == 1 ? "One effect" : "Effects", false, {}};
    for (const EffectRequest& request : requests) {
        gallery.tiles.push_back({labelOf(program.catalogue(), request),
                                 buildChain(program.effectLibrary(), program.catalogue(), {request}, input)});
        gallery.movesWithTime = gallery.movesWithTime || movesWithTime(gallery.tiles.back().chain);
    }
    return gallery;
}

Gallery everyLook(Program& program, const std::string& input) {
    std::vector<std::string> faults;
    std::vector<EffectRequest> requests;
    for (const hostkit::KnownLook& each : hostkit::knownLooks(program.catalogue(), faults)) {
        requests.push_back({{}, each.file.empty() ? each.look.name : each.file.string()});
    }
    for (const std::string& fault : faults) {
        tell("lumiset: " + fault + '\n');
    }
    Gallery gallery = chosenSettings(program, requests, input);
    gallery.title = "Looks";
    return gallery;
}

class GalleryOptions {
public:
    explicit GalleryOptions(CLI::App& command, bool ofLooks) : m_guard(command), m_looks(ofLooks) {
        if (!ofLooks) {
            m_effects.emplace(command, EffectOptions::kAlternatives);
            command.add_option("EFFECT", m_words[0], "name of the effect, without --effect, --look and --looks")
                ->required();
            command.add_flag("--looks", m_looks, "show every look that \"lumiset look list\" has");
        }
        command.add_option("INPUT", m_words[ofLooks ? 0 : 1], "what to read")->required(ofLooks);
        command.add_option("OUTPUT", m_words[ofLooks ? 1 : 2], "the sheet to write [sheet.png]");
        command
            .add_option("--time,-t", m_time, "which picture, in seconds or h:m:s [2.2, or halfway in shorter clips]")
            ->option_text("TIME");
        command.add_option("--columns,-c", m_columns, "pictures side by side [what makes a pleasant sheet]")
            ->check(CLI::Range(1, 100))
            ->option_text("N");
        command.add_option("--tile", m_tileWidth, "width of a picture on the sheet in pixels [320]")
            ->check(CLI::Range(32, 4096))
            ->option_text("PIXELS");
        command.add_option("--title", m_title, "title of the sheet [the effect's name]")->option_text("TEXT");
        command.add_option("--quality", m_quality, "of a JPEG: 2 (best) to 31")
            ->check(CLI::Range(2, 31))
            ->option_text("N");
        command.add_flag("--quiet,-q", m_quiet, "no progress and no summary");
    }

    int run(Program& program) const;

private:
    void render(const Gallery& gallery, const std::string& input, const std::string& output) const;

    std::optional<EffectOptions> m_effects;
    OutputGuard m_guard;
    bool m_looks = false;
    std::string m_words[3];
    std::string m_time;
    int m_columns = 0;
    int m_tileWidth = 0;
    std::string m_title;
    int m_quality = -1;
    bool m_quiet = false;
};

int GalleryOptions::run(Program& program) const {
    const std::vector<EffectRequest> requests = m_effects ? m_effects->requests() : std::vector<EffectRequest>();
    if (m_looks && !requests.empty()) {
        throw UsageError("--looks shows all looks; --effect and --look are not for it.");
    }
    const bool everyOne = requests.empty() && !m_looks;
    if (everyOne ? m_words[1].empty() : !m_words[2].empty()) {
        throw UsageError(everyOne ? "gallery needs EFFECT and INPUT."
                                  : "gallery takes INPUT and OUTPUT alone where --effect, --look or --looks is given.");
    }
    const std::string& input = m_words[everyOne ? 1 : 0];
    const std::string& given = m_words[everyOne ? 2 : 1];
    const std::string output = given.empty() ? "sheet.png" : given;
    const Gallery gallery = everyOne  ? everyPreset(program, m_words[0])
                            : m_looks ? everyLook(program, input)
                                      : chosenSettings(program, requests, input);
    std::vector<std::string> inputs = filesRead(program.catalogue(), requests);
    inputs.push_back(input);
    m_guard.check(output, inputs);
    render(gallery, input, output);
    return kDone;
}

void GalleryOptions::render(const Gallery& gallery, const std::string& input, const std::string& output) const {
    Moment moment = readMoment(input, m_time.empty() ? std::nullopt : std::optional(parseTime(m_time, "--time")));
    watchForInterruption();
    media::Sheet::Plan plan;
    plan.title = m_title.empty() ? gallery.title : m_title;
    if (gallery.movesWithTime) {
        plan.note = "at " + secondsText(moment.picture.timeSeconds);
    }
    plan.labels.emplace_back("Source");
    for (const Tile& tile : gallery.tiles) {
        plan.labels.push_back(tile.label);
    }
    plan.pictureWidth = moment.picture.width;
    plan.pictureHeight = moment.picture.height;
    plan.pixelAspect = moment.format.pixelAspect.value();
    plan.columns = m_columns;
    plan.tileWidth = m_tileWidth;
    media::Sheet sheet(plan);
    media::SinkOptions sinkOptions;
    sinkOptions.quality = m_quality;
    std::unique_ptr<media::Sink> sink = media::openSink(output, sheet.format(), sinkOptions);
    sheet.place(0, moment.picture);

    const std::size_t count = gallery.tiles.size();
    Progress progress(m_quiet, static_cast<std::int64_t>(count), "picture");
    const auto checkInterruption = [&] {
        if (const int signal = interruptingSignal(); signal != 0) {
            progress.clear();
            sink.reset();
            endInterrupted(signal, output);
        }
    };
    const hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    const std::uint32_t threads = std::min(hostkit::wantedThreads(), 64U);
    const auto pool = hostkit::ThreadPool::create(threads);
    std::size_t next = 0;
    std::int64_t done = 0;
    render::PipelineSteps<Job> steps;
    steps.read = [&](Job& job) {
        job.tile = next;
        return next++ < count;
    };
    steps.work = [&](Job& job, int) {
        job.result.allocate(moment.picture.width, moment.picture.height, moment.picture.depth);
        const hostkit::ThreadPool::Turn turn(*pool.get());
        hostkit::Renderer renderer(gallery.tiles[job.tile].chain, kFormatBgra8, allocator.get(), pool.get());
        renderer.render(render::frameOf(moment.picture), render::frameOf(job.result),
                        render::contextOf(moment.picture, moment.format));
        sheet.place(job.tile + 1, job.result);
    };
    steps.write = [&](Job&) { ++done; };
    steps.tick = [&] {
        checkInterruption();
        progress.show(done);
    };
    try {
        render::OrderedPipeline<Job>(static_cast<int>(threads), std::move(steps)).run();
        sink->write(sheet.picture());
        checkInterruption();
        sink->finish();
        progress.finish(done, output);
    } catch (...) {
        progress.clear();
        throw;
    }
}

}  // namespace

void addGalleryCommand(CLI::App& app, Program& program) {
    CLI::App& command = addCommand(app, "gallery", "Draws a sheet of an effect's presets", kGalleryIntroduction);
    command.footer(kGalleryFooter);
    const auto options = std::make_shared<GalleryOptions>(command, false);
    program.onChosen(command, [options, &program] { return options->run(program); });
}

void addLookGalleryCommand(CLI::App& look, Program& program) {
    CLI::App& command = addCommand(look, "gallery", "Draws a sheet of every look");
    const auto options = std::make_shared<GalleryOptions>(command, true);
    program.onChosen(command, [options, &program] { return options->run(program); });
}

}  // namespace lumiset::app
