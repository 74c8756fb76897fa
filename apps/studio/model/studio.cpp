#include "apps/studio/model/studio.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <algorithm>
#include <exception>
#include <utility>

#include "apps/studio/model/numbered_pictures.h"
#include "hostkit/look_files.h"
#include "hostkit/preset_file.h"
#include "media/scene_source.h"

namespace lumiset::studio {
namespace {

constexpr int kRecentFiles = 10;
const QString kRecentClips = QStringLiteral("recent/clips");
const QString kRecentDocuments = QStringLiteral("recent/looks");
constexpr const char* kFirstClip = "scene:1280x720:4";

QString recoveryFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/lumiset/recovery";
}

bool isPreset(const QString& file) {
    return QFileInfo(file).suffix().startsWith("lumv", Qt::CaseInsensitive);
}

QString absolute(const QString& file) {
    return media::isSceneName(file.toStdString()) ? file : QFileInfo(file).absoluteFilePath();
}

}  // namespace

Studio::Studio(QObject* parent)
    : QObject(parent),
      m_catalogue(m_module.effectLibrary()),
      document(m_catalogue),
      preview(m_module.effectLibrary(), document),
      player(preview),
      thumbnails(document, preview),
      exports(m_module.effectLibrary(), m_catalogue),
      recovery(document, recoveryFolder()) {
    connect(&preview, &Preview::clipOpened, this, [this] {
        m_clip = toQt(preview.clip()->path);
        m_isStandIn = std::exchange(m_standInWanted, false);
        recovery.setClip(m_clip);
        if (!media::isSceneName(preview.clip()->path)) {
            remember(kRecentClips, m_clip);
        }
    });
    connect(&preview, &Preview::clipFailed, this, [this](const QString& path, const QString& reason) {
        if (!QFileInfo::exists(path) && toQt(document.look().clip) == path) {
            emit clipMissing(path);
        } else {
            emit clipFailed(reason);
        }
        if (preview.clip() == nullptr) {
            m_standInWanted = true;
            preview.openClip(kFirstClip);
        }
    });
    connect(&preview, &Preview::renderFailed, this, &Studio::failed);
    connect(&preview, &Preview::told, this, &Studio::told);
}

// Answers of the engine are for objects that go before it does.
Studio::~Studio() {
    preview.engine().stop();
}

bool Studio::isLook(const QString& file) {
    return file.endsWith(".lumilook", Qt::CaseInsensitive);
}

void Studio::openFile(const QString& file) {
    openFiles({file});
}

void Studio::openFiles(const QStringList& files) {
    QStringList clips;
    for (const QString& file : files) {
        if (isLook(file)) {
            openDocument(absolute(file));
        } else if (isPreset(file)) {
            openPreset(file);
        } else {
            clips << absolute(file);
        }
    }
    if (const auto sequence = sequenceOf(clips)) {
        clips = {*sequence};
    }
    if (!clips.isEmpty()) {
        openClip(clips.front());
    } else if (m_clip.isEmpty() && document.look().clip.empty()) {
        openClip({});  // a look or preset needs something to be seen on
    }
    if (clips.size() > 1) {
        emit clipsOffered(clips);
    }
}

void Studio::applyLookFile(const QString& file) {
    try {
        document.applyLook(hostkit::loadLook(m_catalogue, file.toStdString()));
    } catch (const std::exception& error) {
        emit failed(toQt(error.what()));
    }
}

void Studio::openClip(const QString& clip) {
    player.stop();
    preview.openClip(clip.isEmpty() ? kFirstClip : clip);
}

void Studio::newDocument() {
    document.clear();
    if (preview.clip() == nullptr) {
        openClip({});
    }
}

void Studio::openDocument(const QString& file) {
    try {
        document.open(file);
        remember(kRecentDocuments, file);
        const QString clip = toQt(document.look().clip);
        if (!clip.isEmpty() && clip != m_clip) {
            openClip(clip);
        }
    } catch (const std::exception& error) {
        emit failed(toQt(error.what()));
    }
}

void Studio::openPreset(const QString& file) {
    try {
        const EffectDescription& effect = hostkit::effectOfPresetFile(effectLibrary(), m_catalogue, file.toStdString());
        hostkit::ParameterStore values(effect);
        const std::string name = hostkit::loadPresetFile(effectLibrary(), file.toStdString(), values);
        LookEffect made{effect.name};
        for (const ParameterDescription& parameter : effect.parameters) {
            setValue(effect, made, parameter, values.valueAt(parameter, 0.0), {});
        }
        document.insertEffect(made, tr("Add %1: %2").arg(toQt(effect.name), toQt(name)));
    } catch (const std::exception& error) {
        emit failed(toQt(error.what()));
    }
}

bool Studio::save(const QString& file) {
    try {
        document.save(file, media::isSceneName(m_clip.toStdString()) ? QString() : m_clip);
        remember(kRecentDocuments, file);
        return true;
    } catch (const std::exception& error) {
        emit failed(toQt(error.what()));
        return false;
    }
}

bool Studio::savePreset(const QString& file) {
    const LookEffect* effect = document.selectedEffect();
    if (effect == nullptr) {
        return false;
    }
    try {
        const EffectDescription& description = *document.selectedDescription();
        hostkit::ParameterStore values(description);
        for (const ParameterDescription& parameter : description.parameters) {
            values.set(parameter, document.value(parameter));
        }
        hostkit::savePresetFile(effectLibrary(), file.toStdString(), values);
        return true;
    } catch (const std::exception& error) {
        emit failed(toQt(error.what()));
        return false;
    }
}

void Studio::restoreLeftover(const Recovery::Found& found) {
    document.restore(found.look, found.file);
    recovery.writeNow();
    recovery.discard(found);
    const QString clip = toQt(found.look.clip);
    if (!clip.isEmpty() && clip != m_clip) {
        openClip(clip);
    }
}

void Studio::remember(const QString& list, const QString& file) {
    QSettings settings;
    QStringList files = settings.value(list).toStringList();
    files.removeAll(file);
    files.prepend(file);
    settings.setValue(list, files.mid(0, kRecentFiles));
}

QStringList Studio::recentClips() const {
    return QSettings().value(kRecentClips).toStringList();
}

QStringList Studio::recentDocuments() const {
    return QSettings().value(kRecentDocuments).toStringList();
}

render::FileJob Studio::jobFor(const QString& output) const {
    render::FileJob job;
    job.input = m_clip.toStdString();
    job.output = output.toStdString();
    job.gpu = preview.usesGpu();
    if (const ClipInfo* clip = preview.clip(); clip != nullptr) {
        const FrameRange range = preview.range();
        if (range.first > 0) {
            job.startSeconds = secondsOf(range.first, clip->format);
        }
        if (range.last < clip->frameCount - 1) {
            // A hair short of the next frame, whatever the clock of its file rounds to.
            job.durationSeconds = secondsOf(range.last + 1, clip->format) - job.startSeconds - 1e-6;
        }
    }
    return job;
}

QString Studio::proposedOutput(const QString& extension) const {
    return outputFor(m_clip, extension);
}

QString Studio::outputFor(const QString& clip, const QString& extension) const {
    const bool isScene = media::isSceneName(clip.toStdString());
    QString folder = QSettings().value("folders/export").toString();
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        folder =
            isScene ? QStandardPaths::writableLocation(QStandardPaths::MoviesLocation) : QFileInfo(clip).absolutePath();
        folder = QFileInfo(folder).isDir() ? folder : QDir::homePath();
    }
    QString stem = isScene ? QStringLiteral("scene") : QFileInfo(clip).completeBaseName();
    stem.remove(QRegularExpression("_?%\\d*d"));  // of numbered pictures
    const QString base =
        QDir(folder).filePath(stem + "_" + document.title().simplified().replace(' ', '_').replace('/', '_'));
    const auto isTaken = [this](const QString& name) {
        return QFileInfo::exists(name) ||
               std::any_of(exports.items().begin(), exports.items().end(), [&](const ExportQueue::Item& each) {
                   return each.isOpen() && toQt(each.job.output) == name;
               });
    };
    QString name = base + '.' + extension;
    for (int number = 2; isTaken(name); ++number) {
        name = base + '_' + QString::number(number) + '.' + extension;
    }
    return name;
}

}  // namespace lumiset::studio
