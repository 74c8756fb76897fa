#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <atomic>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

#include "apps/studio/core/frame_wish.h"
#include "hostkit/effect_catalogue.h"
#include "render/file_render.h"

namespace lumiset::studio {

/// What is known of a clip before it is opened; nothing where it is 0.
struct KnownClip {
    qint64 frames = 0;
    Size size{};
};

/// Clips to be rendered to files, one after the other, each with the look as it was when it was added. Their files
/// appear when they are complete.
class ExportQueue : public QObject {
    Q_OBJECT

public:
    enum class State { kWaiting, kRunning, kDone, kFailed, kCancelled };
    struct Item {
        quint64 number = 0;
        render::FileJob job{};
        LookSnapshot look{};
        QString lookName{};
        Size size{};
        State state = State::kWaiting;
        qint64 frames = 0;
        qint64 expected = 0;   ///< 0: not known
        double seconds = 0.0;  ///< spent on it, without pauses
        QStringList notes{};   ///< what is to be known of the result
        QString error{};
        /// It waits or runs.
        [[nodiscard]] bool isOpen() const { return state == State::kWaiting || state == State::kRunning; }
        /// Nothing as long as there is no telling.
        [[nodiscard]] std::optional<double> secondsLeft() const;
    };

    /// `library` and `catalogue` must outlive the queue.
    ExportQueue(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, QObject* parent = nullptr);
    /// Gives up what is not done.
    ~ExportQueue() override;

    quint64 add(const render::FileJob& job, LookSnapshot look, const QString& lookName, const KnownClip& known = {});
    void cancel(quint64 number);
    void cancelAll();
    void removeFinished();
    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const { return m_paused; }

    [[nodiscard]] const std::list<Item>& items() const { return m_items; }
    /// Some wait or run.
    [[nodiscard]] bool isBusy() const;
    /// Of everything that waits and runs, as if the ones that wait took as long for a frame as the one that runs, and
    /// those of unknown length nothing; nothing as long as there is no telling.
    [[nodiscard]] std::optional<double> secondsLeft() const;
    /// Something waits whose length is not known.
    [[nodiscard]] bool hasUnknown() const;

signals:
    void changed();
    void finished(quint64 number);  ///< in whatever way

private:
    struct Result {
        State state;
        QStringList notes;
        QString error;
    };
    void startNext();
    void progressed(quint64 number, qint64 frames, qint64 expected, double seconds);
    void ended(quint64 number, const Result& result);
    Item* find(quint64 number);
    // On the render's thread:
    Result run(const render::FileJob& job, const hostkit::Look& look, quint64 number);

    IEffectLibrary& m_library;
    const hostkit::EffectCatalogue& m_catalogue;
    std::list<Item> m_items;
    quint64 m_lastNumber = 0;
    bool m_paused = false;

    std::mutex m_pauseMutex;
    std::condition_variable m_resumed;
    bool m_pauseWanted = false;  // guarded by the mutex
    std::atomic<bool> m_stopWanted{false};
    std::thread m_thread;
};

}  // namespace lumiset::studio
