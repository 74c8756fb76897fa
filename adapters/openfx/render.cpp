#include "adapters/openfx/render.h"

#include <algorithm>
#include <new>

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/host_threads.h"
#include "adapters/openfx/transfer.h"
#include "hostkit/renderer.h"

namespace lumiset::openfx {
namespace {

/// A frame in the memory that frames before it have left.
class ScratchFrame {
public:
    ScratchFrame(hostkit::ComPtr<IHostAllocator> memory, int width, int height, PixelFormat format)
        : m_memory(std::move(memory)) {
        m_desc.width = width;
        m_desc.height = height;
        m_desc.bytesPerPixel = formatBytesPerPixel(format);
        m_desc.format = static_cast<std::uint32_t>(format);
        if (m_memory->AllocImage(&m_desc.data, width, height, m_desc.bytesPerPixel, &m_desc.stride) == 0) {
            throw std::bad_alloc();
        }
    }
    ~ScratchFrame() { m_memory->FreeImage(m_desc.data); }
    ScratchFrame(const ScratchFrame&) = delete;
    ScratchFrame& operator=(const ScratchFrame&) = delete;

    [[nodiscard]] const VideoFrameDesc& desc() const { return m_desc; }

private:
    hostkit::ComPtr<IHostAllocator> m_memory;
    VideoFrameDesc m_desc{};
};

/// What of a frame is rendered, and how its fields are.
struct FieldPlan {
    hostkit::FieldOrder order = hostkit::FieldOrder::kProgressive;
    Rows rows = Rows::kAll;  ///< that are written
    bool oneOfTwo = false;   ///< the frame has both fields, and the effect is to see the one alone
};

bool isOneField(const std::string& field) {
    return field == value::kFieldLower || field == value::kFieldUpper;
}

/// Fields are counted from the bottom; the kit counts from the top.
bool isTopField(bool upper, int height) {
    return upper == (height % 2 == 0);
}

hostkit::FieldOrder alone(bool top) {
    return top ? hostkit::FieldOrder::kTopFieldAlone : hostkit::FieldOrder::kBottomFieldAlone;
}

/// `asked` is the field that the host wants, `stored` what the picture says it has, `order` what the clip says.
FieldPlan planFields(FieldSetting setting, const std::string& asked, const std::string& stored,
                     const std::string& order, int height) {
    FieldPlan plan;
    if (isOneField(stored)) {
        // Half a frame's rows, and the frame's height is not known: as if it were even.
        plan.order = alone(stored == value::kFieldUpper);
    } else if (isOneField(asked)) {
        const bool upper = asked == value::kFieldUpper;
        plan.rows = upper ? Rows::kUpper : Rows::kLower;
        plan.oneOfTwo = setting != FieldSetting::kProgressive && height > 1;
        plan.order = plan.oneOfTwo ? alone(isTopField(upper, height)) : hostkit::FieldOrder::kProgressive;
    } else {
        const bool told = setting == FieldSetting::kFromHost && asked != value::kFieldNone &&
                          stored != value::kFieldNone && isOneField(order);
        const bool upperFirst =
            setting == FieldSetting::kFromHost ? order == value::kFieldUpper : setting == FieldSetting::kUpperFirst;
        if (told || setting == FieldSetting::kUpperFirst || setting == FieldSetting::kLowerFirst) {
            plan.order =
                isTopField(upperFirst, height) ? hostkit::FieldOrder::kTopFirst : hostkit::FieldOrder::kBottomFirst;
        }
    }
    return plan;
}

/// One render action.
class Job {
public:
    Job(const Instance& instance, const Properties& inArgs)
        : m_instance(instance),
          m_args(inArgs),
          m_time(inArgs.getDouble(prop::kTime, 0.0)),
          m_memory(instance.bundle().scratch()),
          m_threads(hostThreads(instance.host())) {
        if (!m_threads) {
            m_threads = instance.bundle().threads();
        }
    }

    void run() {
        const Image output(m_instance, m_instance.output(), m_time);
        if (!output) {
            throw HostError("The host gives no picture to render into.");
        }
        const RectI window = m_args.getRectI(prop::kRenderWindow).value_or(output.pixels().bounds);
        const Image source(m_instance, m_instance.source(), m_time);
        if (!source) {
            clearPixels(output.pixels(), window, Rows::kAll, 0);
            return;
        }
        const bool bytes = output.pixels().depth == Depth::kByte && source.pixels().depth == Depth::kByte;
        renderPicture(source, output, window, bytes ? kFormatBgra8 : kFormatBgraFloat);
    }

private:
    [[nodiscard]] bool goesOn() const {
        const auto* suite = m_instance.host().effect;
        return suite->abort == nullptr || suite->abort(m_instance.handle()) == 0;
    }

    [[nodiscard]] hostkit::FrameContext contextOf(const Image& source, const FieldPlan& plan) const {
        hostkit::FrameContext context;
        const double rate = m_instance.frameRate();
        context.timeSeconds = m_time / rate;
        context.durationSeconds = 1.0 / rate;
        context.fields = plan.order;
        context.pixelAspect = source.pixelAspect();
        if (context.pixelAspect <= 0.0) {
            context.pixelAspect = m_instance.sourceProperties().getDouble(prop::kPixelAspect, 0.0);
        }
        return context;
    }

    /// An abort leaves the output as it is: the host throws it away.
    void renderPicture(const Image& source, const Image& output, const RectI& window, PixelFormat format) {
        const RectI picture = source.picture();
        const int width = picture.x2 - picture.x1;
        const int height = picture.y2 - picture.y1;
        const FieldPlan plan =
            planFields(m_instance.fieldSetting(m_time), m_args.getString(prop::kFieldToRender), source.field(),
                       m_instance.sourceProperties().getString(prop::kFieldOrder), height);
        const GoOn goOn = [this] { return goesOn(); };
        const ScratchFrame from(m_memory, width, height, format);
        if (!readPixels(source.pixels(), picture, from.desc(), goOn)) {
            return;
        }
        const ScratchFrame to(m_memory, width, height, format);
        const std::vector<hostkit::EffectStage> chain{{m_instance.effect().object, m_instance.valuesAt(m_time)}};
        hostkit::Renderer renderer(chain, format, m_memory.get(), m_threads.get());
        const bool bottom = plan.order == hostkit::FieldOrder::kBottomFieldAlone;
        renderer.render(plan.oneOfTwo ? hostkit::fieldOf(from.desc(), bottom) : from.desc(),
                        plan.oneOfTwo ? hostkit::fieldOf(to.desc(), bottom) : to.desc(), contextOf(source, plan));
        if (goesOn()) {
            writePixels(to.desc(), picture, output.pixels(), window, plan.rows, goOn);
        }
    }

    const Instance& m_instance;
    const Properties& m_args;
    double m_time;
    hostkit::ComPtr<IHostAllocator> m_memory;
    hostkit::ComPtr<IHostParallel> m_threads;
};

}  // namespace

void render(const Instance& instance, const Properties& inArgs) {
    Job(instance, inArgs).run();
}

}  // namespace lumiset::openfx
