#include "apps/studio/model/preview.h"

#include <QMetaObject>
#include <QStringList>
#include <algorithm>
#include <utility>

#include "render/file_render.h"
#include "render/gpu_refusal.h"

namespace lumiset::studio {
namespace {

constexpr int kRefineAfterMs = 120;
constexpr qint64 kReadAhead = 48;

}  // namespace

Preview::Preview(IEffectLibrary& library, Document& document, QObject* parent)
    : QObject(parent), m_document(document), m_engine(library, document.catalogue()) {
    m_clock.start();
    m_refine.setSingleShot(true);
    m_refine.setInterval(kRefineAfterMs);
    connect(&m_refine, &QTimer::timeout, this, &Preview::refine);
    connect(&document, &Document::lookChanged, this, &Preview::update);
    connect(&document, &Document::structureChanged, this, [this] { m_cost.forget(); });
    connect(&document, &Document::selectionChanged, this, [this] {
        if (m_compare != Compare::kOff && m_before == Before::kWithoutEffect) {
            update();
        }
    });
}

Preview::~Preview() = default;

void Preview::openClip(const QString& path) {
    m_engine.clearThumbnails();
    m_engine.open(path.toStdString(), [this, path](const ClipInfo* info, const std::string& error) {
        QMetaObject::invokeMethod(
            this,
            [this, path, opened = info != nullptr ? std::optional(*info) : std::nullopt, error] {
                if (!opened) {
                    emit clipFailed(path, toQt(error));
                    return;
                }
                m_clip = opened;
                m_frame = 0;
                m_range = {0, m_clip->frameCount - 1};
                m_cost.forget();
                m_document.setTime(0.0);
                emit clipOpened();
                emit rangeChanged();
                emit frameChanged();
                m_document.setClipSeconds(render::clipSeconds(m_clip->format));
            },
            Qt::QueuedConnection);
    });
}

double Preview::framesPerSecond() const {
    const double rate = m_clip ? m_clip->format.frameRate.value() : 25.0;
    return rate > 0.0 ? rate : 25.0;
}

void Preview::setFrame(qint64 frame) {
    frame = std::clamp<qint64>(frame, 0, m_clip ? m_clip->frameCount - 1 : 0);
    if (m_clip && frame != m_frame) {
        m_frame = frame;
        m_document.setTime(secondsOf(frame, m_clip->format));
        update();
        emit frameChanged();
    }
}

void Preview::setRange(FrameRange range) {
    const qint64 last = m_clip ? m_clip->frameCount - 1 : 0;
    range = {std::clamp<qint64>(range.first, 0, last), std::clamp<qint64>(range.last, 0, last)};
    if (range.first <= range.last) {
        m_range = range;
        emit rangeChanged();
    }
}

void Preview::setTarget(Size size) {
    if (size != m_target && size.width > 0 && size.height > 0) {
        m_target = size;
        update();
    }
}

void Preview::setCompare(Compare compare) {
    m_compare = compare;
    update();
    emit modeChanged();
}

void Preview::setBefore(Before before) {
    m_before = before;
    update();
    emit modeChanged();
}

void Preview::takeSnapshot() {
    m_snapshot = m_document.snapshot();
    setBefore(Before::kSnapshot);
}

void Preview::setSourceHeld(bool held) {
    if (held != m_sourceHeld) {
        m_sourceHeld = held;
        update();
        emit modeChanged();
    }
}

void Preview::setMaskHeld(bool held) {
    if (held != m_maskHeld) {
        m_maskHeld = held;
        update();
    }
}

void Preview::setUsesGpu(bool gpu) {
    m_gpu = gpu;
    m_cost.forget();
    update();
    emit modeChanged();
}

void Preview::setFields(Fields fields) {
    m_fields = fields;
    update();
    emit modeChanged();
}

bool Preview::retryGpu() {
    const bool removed = render::letEffectsTryOpenGL();
    m_engine.forgetGpu();
    m_cost.forget();
    update();
    return removed;
}

void Preview::setCandidate(LookSnapshot look) {
    if (look != m_candidate) {
        m_candidate = std::move(look);
        update();
    }
}

void Preview::setPlaying(bool playing) {
    m_playing = playing;
    m_rate.reset();
    if (!playing) {
        update();
    }
}

double Preview::shownRate() const {
    return m_rate.rate(static_cast<double>(m_clock.nsecsElapsed()) * 1e-9);
}

std::vector<std::int64_t> Preview::cachedFrames() const {
    return m_engine.cachedFrames(wish());
}

FrameWish Preview::wish() const {
    FrameWish wish;
    wish.frame = m_frame;
    wish.size = m_target;
    wish.gpu = m_gpu;
    wish.fields = m_fields;
    wish.look = m_candidate ? m_candidate : m_document.snapshot();
    if (m_maskHeld && m_document.selected() >= 0) {
        if (const ParameterDescription* view = maskViewOf(*m_document.selectedDescription())) {
            // What is hovered over may have other effects, or none.
            auto masked =
                std::make_shared<Look>(inputOf(m_document.look(), static_cast<std::size_t>(m_document.selected()) + 1));
            masked->effects.back().of(*view).value.boolean = 1;
            masked->effects.back().off = false;
            wish.look = std::move(masked);
        }
    }
    if (m_sourceHeld) {
        wish.look = nullptr;
    }
    wish.compares = m_compare != Compare::kOff;
    if (m_before == Before::kSnapshot) {
        wish.before = m_snapshot;
    } else if (m_before == Before::kWithoutEffect && m_document.selected() >= 0) {
        wish.before =
            std::make_shared<const Look>(without(m_document.look(), static_cast<std::size_t>(m_document.selected())));
    }
    return wish;
}

void Preview::update() {
    if (!m_clip) {
        return;
    }
    FrameWish next = wish();
    next.divisor = m_cost.divisor();
    next.number = ++m_wishNumber;
    m_engine.stopReadAhead();
    m_engine.show(next, [this](FrameShot&& shot) { take(std::move(shot)); });
    if (next.divisor > 1 && !m_playing) {
        m_refine.start();
    } else {
        m_refine.stop();
    }
}

void Preview::refine() {
    FrameWish next = wish();
    next.number = ++m_wishNumber;
    m_engine.refine(next, [this](FrameShot&& shot) { take(std::move(shot)); });
}

// On the engine's thread. Shots that come faster than the window takes them replace each other.
void Preview::take(FrameShot&& shot) {
    const std::lock_guard lock(m_arrivalMutex);
    const bool underWay = m_arrived.has_value();
    m_arrived = std::move(shot);
    if (!underWay) {
        QMetaObject::invokeMethod(this, &Preview::deliver, Qt::QueuedConnection);
    }
}

void Preview::deliver() {
    std::optional<FrameShot> arrived;
    {
        const std::lock_guard lock(m_arrivalMutex);
        arrived.swap(m_arrived);
    }
    QStringList sentences;
    for (const std::string& sentence : m_engine.takeMessages()) {
        sentences << toQt(sentence);
    }
    if (!sentences.isEmpty()) {
        emit told(sentences.join(' '));
    }
    if (arrived->picture == nullptr) {
        if (const QString error = toQt(arrived->error); error != m_lastError) {
            m_lastError = error;
            emit renderFailed(error);
        }
        return;
    }
    m_lastError.clear();
    if (arrived->effectSeconds > 0.0) {
        m_cost.measured(arrived->wish.divisor, arrived->effectSeconds);
    }
    m_shot = std::move(*arrived);
    m_rate.shown(static_cast<double>(m_clock.nsecsElapsed()) * 1e-9);
    emit shotChanged();
    if (m_shot.wish.number == m_wishNumber && !m_candidate) {
        readAhead();
    }
}

void Preview::readAhead() {
    if (!m_clip || m_clip->frameCount < 2 || m_sourceHeld || m_maskHeld || m_compare != Compare::kOff ||
        m_shot.wish.divisor > 1) {
        return;
    }
    std::vector<FrameWish> wishes;
    FrameWish next = wish();
    for (qint64 i = 1; i <= kReadAhead && m_frame + i <= m_range.last; ++i) {
        next.frame = m_frame + i;
        wishes.push_back(next);
    }
    m_engine.readAhead(wishes, [](FrameShot&&) {});
}

}  // namespace lumiset::studio
