#include "apps/studio/model/export_queue.h"

#include <QMetaObject>
#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>

#include "apps/studio/model/document.h"
#include "render/gpu_refusal.h"

namespace lumiset::studio {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kReportEvery = std::chrono::milliseconds(100);

}  // namespace

std::optional<double> ExportQueue::Item::secondsLeft() const {
    if (frames < 1 || expected < 1 || seconds <= 0.0) {
        return std::nullopt;
    }
    return std::max(0.0, seconds / static_cast<double>(frames) * static_cast<double>(expected - frames));
}

ExportQueue::ExportQueue(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue, QObject* parent)
    : QObject(parent), m_library(library), m_catalogue(catalogue) {}

ExportQueue::~ExportQueue() {
    m_items.clear();
    {
        const std::lock_guard lock(m_pauseMutex);
        m_stopWanted = true;
    }
    m_resumed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

quint64 ExportQueue::add(const render::FileJob& job, LookSnapshot look, const QString& lookName,
                         const KnownClip& known) {
    m_items.push_back({++m_lastNumber, job, std::move(look), lookName, known.size, State::kWaiting, 0, known.frames});
    startNext();
    emit changed();
    return m_lastNumber;
}

ExportQueue::Item* ExportQueue::find(quint64 number) {
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [number](const Item& each) { return each.number == number; });
    return found != m_items.end() ? &*found : nullptr;
}

void ExportQueue::cancel(quint64 number) {
    Item* item = find(number);
    if (item != nullptr && item->state == State::kWaiting) {
        item->state = State::kCancelled;
        emit changed();
        emit finished(number);
    } else if (item != nullptr && item->state == State::kRunning) {
        {
            const std::lock_guard lock(m_pauseMutex);
            m_stopWanted = true;  // ends it within a tenth of a second, which `ended` tells
        }
        m_resumed.notify_all();
    }
}

void ExportQueue::cancelAll() {
    for (Item& item : m_items) {
        if (item.state == State::kWaiting) {
            item.state = State::kCancelled;
        }
    }
    for (const Item& item : m_items) {
        if (item.state == State::kRunning) {
            cancel(item.number);
            break;
        }
    }
    emit changed();
}

void ExportQueue::removeFinished() {
    m_items.remove_if([](const Item& each) { return !each.isOpen(); });
    emit changed();
}

void ExportQueue::setPaused(bool paused) {
    m_paused = paused;
    {
        const std::lock_guard lock(m_pauseMutex);
        m_pauseWanted = paused;
    }
    m_resumed.notify_all();
    if (!paused) {
        startNext();
    }
    emit changed();
}

bool ExportQueue::isBusy() const {
    return std::any_of(m_items.begin(), m_items.end(), [](const Item& each) { return each.isOpen(); });
}

std::optional<double> ExportQueue::secondsLeft() const {
    double total = 0.0;
    double perFrame = 0.0;
    for (const Item& item : m_items) {
        if (item.state == State::kRunning) {
            const auto left = item.secondsLeft();
            if (!left) {
                return std::nullopt;
            }
            total += *left;
            perFrame = item.seconds / static_cast<double>(item.frames);
        }
    }
    for (const Item& item : m_items) {
        if (item.state == State::kWaiting) {
            if (perFrame <= 0.0) {
                return std::nullopt;
            }
            total += perFrame * static_cast<double>(item.expected);
        }
    }
    return total;
}

bool ExportQueue::hasUnknown() const {
    return std::any_of(m_items.begin(), m_items.end(),
                       [](const Item& each) { return each.state == State::kWaiting && each.expected < 1; });
}

void ExportQueue::startNext() {
    const bool running =
        std::any_of(m_items.begin(), m_items.end(), [](const Item& each) { return each.state == State::kRunning; });
    const auto next =
        std::find_if(m_items.begin(), m_items.end(), [](const Item& each) { return each.state == State::kWaiting; });
    if (running || m_paused || next == m_items.end()) {
        return;
    }
    if (m_thread.joinable()) {
        m_thread.join();  // it has told its end
    }
    next->state = State::kRunning;
    m_stopWanted = false;
    m_thread = std::thread([this, job = next->job, look = next->look, number = next->number] {
        const Result result = run(job, *look, number);
        QMetaObject::invokeMethod(
            this, [this, number, result] { ended(number, result); }, Qt::QueuedConnection);
    });
}

ExportQueue::Result ExportQueue::run(const render::FileJob& job, const hostkit::Look& look, quint64 number) {
    const auto pause = [this] {
        std::unique_lock lock(m_pauseMutex);
        m_resumed.wait(lock, [this] { return !m_pauseWanted || m_stopWanted; });
    };
    qint64 expected = 0;
    double seconds = 0.0;
    Clock::time_point resumed = Clock::now();
    Clock::time_point reported = resumed;
    QStringList notes;
    render::FileWatcher watcher;
    watcher.begun = [&](std::int64_t frames) { expected = frames; };
    watcher.progress = [&](std::int64_t frames) {
        const Clock::time_point now = Clock::now();
        if (now - reported >= kReportEvery) {
            reported = now;
            const double spent = seconds + std::chrono::duration<double>(now - resumed).count();
            QMetaObject::invokeMethod(
                this, [this, number, frames, expected, spent] { progressed(number, frames, expected, spent); },
                Qt::QueuedConnection);
            seconds = spent;
            pause();
            resumed = Clock::now();
        }
    };
    watcher.wantsStop = [this] { return m_stopWanted.load(); };
    watcher.stopped = [] {};
    watcher.noGPU = [&](const std::string& why) { notes << toQt(why) + " " + tr("The processor renders instead."); };
    std::mutex notesMutex;  // OpenGL tells on the threads that render
    watcher.gpu.driver = [&](const std::string& sentence) {
        const std::lock_guard lock(notesMutex);
        notes << toQt(sentence);
    };
    watcher.gpu.leftToOthers = [&](const std::string& effect) {
        const std::lock_guard lock(notesMutex);
        notes << toQt(render::refusalInOpenGL(m_library, effect)) + " " + tr("The processor renders it instead.");
    };
    try {
        const double clipSeconds =
            hostkit::hasKeysInParts(look) ? render::clipSeconds(media::openSource(job.input)->format()) : 0.0;
        const auto chain = hostkit::buildChain(m_library, m_catalogue, {{look, nullptr}}, clipSeconds);
        const auto result = render::renderFile(job, chain, watcher);
        if (!result) {
            return {State::kCancelled, {}, {}};
        }
        for (const std::string& note : result->notes) {
            notes << toQt(note);
        }
        return {State::kDone, notes, {}};
    } catch (const std::bad_alloc&) {
        return {State::kFailed, notes, tr("There is not enough memory.")};
    } catch (const std::exception& error) {
        return {State::kFailed, notes, toQt(error.what())};
    }
}

void ExportQueue::progressed(quint64 number, qint64 frames, qint64 expected, double seconds) {
    if (Item* item = find(number)) {
        item->frames = frames;
        item->expected = expected;
        item->seconds = seconds;
        emit changed();
    }
}

void ExportQueue::ended(quint64 number, const Result& result) {
    if (Item* item = find(number)) {
        item->state = result.state;
        item->notes = result.notes;
        item->error = result.error;
        if (result.state == State::kDone) {
            item->frames = std::max(item->frames, item->expected);
        }
    }
    startNext();
    emit changed();
    emit finished(number);
}

}  // namespace lumiset::studio
