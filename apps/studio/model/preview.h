#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <mutex>
#include <optional>

#include "apps/studio/core/engine.h"
#include "apps/studio/core/play_clock.h"
#include "apps/studio/core/render_cost.h"
#include "apps/studio/model/document.h"

namespace lumiset::studio {

/// What the viewer shows: a clip, a moment of it, and the document's look on it, beside what it is compared with. It
/// asks the engine for pictures whenever something of that changes, small ones while somebody drags over a slow look.
class Preview : public QObject {
    Q_OBJECT

public:
    enum class Compare { kOff, kWipe, kSideBySide };
    enum class Before { kSource, kSnapshot, kWithoutEffect };

    Preview(IEffectLibrary& library, Document& document, QObject* parent = nullptr);
    ~Preview() override;

    /// Answers by `clipOpened` or `clipFailed`.
    void openClip(const QString& path);
    [[nodiscard]] const ClipInfo* clip() const { return m_clip ? &*m_clip : nullptr; }
    [[nodiscard]] double framesPerSecond() const;
    [[nodiscard]] qint64 frame() const { return m_frame; }
    void setFrame(qint64 frame);

    /// What playing and exporting keep to.
    [[nodiscard]] FrameRange range() const { return m_range; }
    void setRange(FrameRange range);

    /// How large the viewer shows it, in pixels of the screen.
    void setTarget(Size size);
    [[nodiscard]] Compare compare() const { return m_compare; }
    void setCompare(Compare compare);
    [[nodiscard]] Before before() const { return m_before; }
    void setBefore(Before before);
    /// Keeps the present look to compare with.
    void takeSnapshot();
    [[nodiscard]] bool hasSnapshot() const { return m_snapshot != nullptr; }
    void setSourceHeld(bool held);
    [[nodiscard]] bool isSourceHeld() const { return m_sourceHeld; }
    void setMaskHeld(bool held);
    [[nodiscard]] bool usesGpu() const { return m_gpu; }
    void setUsesGpu(bool gpu);
    /// What is shown of interlaced clips.
    [[nodiscard]] Fields fields() const { return m_fields; }
    void setFields(Fields fields);
    /// Lets effects that crashed in OpenGL try again. False where what is known of crashes cannot be removed.
    bool retryGpu();
    /// A look to be seen for as long as the pointer is over it; null: the document's again.
    void setCandidate(LookSnapshot look);
    [[nodiscard]] const LookSnapshot& candidate() const { return m_candidate; }
    /// While a clip plays nothing is refined, and pictures that come are counted.
    void setPlaying(bool playing);

    /// What is to be seen now; without a picture before the first.
    [[nodiscard]] const FrameShot& shot() const { return m_shot; }
    [[nodiscard]] double shownRate() const;
    [[nodiscard]] std::vector<std::int64_t> cachedFrames() const;
    [[nodiscard]] Engine& engine() { return m_engine; }
    /// The wish for the present moment.
    [[nodiscard]] FrameWish wish() const;

signals:
    void clipOpened();
    void clipFailed(const QString& path, const QString& reason);
    void frameChanged();
    void rangeChanged();
    void shotChanged();
    void modeChanged();  ///< what is compared, and how
    void renderFailed(const QString& reason);
    void told(const QString& sentence);

private:
    void update();
    void refine();
    void take(FrameShot&& shot);
    void deliver();
    void readAhead();

    Document& m_document;
    std::optional<ClipInfo> m_clip;
    qint64 m_frame = 0;
    FrameRange m_range;
    Size m_target{640, 360};
    Compare m_compare = Compare::kOff;
    Before m_before = Before::kSource;
    LookSnapshot m_snapshot;
    LookSnapshot m_candidate;
    bool m_sourceHeld = false;
    bool m_maskHeld = false;
    bool m_gpu = false;
    Fields m_fields = Fields::kWoven;
    bool m_playing = false;
    RenderCost m_cost;
    RateMeter m_rate;
    QElapsedTimer m_clock;
    QTimer m_refine;
    std::uint64_t m_wishNumber = 0;
    FrameShot m_shot;
    QString m_lastError;

    std::mutex m_arrivalMutex;
    std::optional<FrameShot> m_arrived;  ///< the newest; its event is under way
    Engine m_engine;                     // last: its thread uses the others
};

}  // namespace lumiset::studio
