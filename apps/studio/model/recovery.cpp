#include "apps/studio/model/recovery.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QUuid>

#include "apps/studio/model/document.h"
#include "hostkit/look_files.h"

namespace lumiset::studio {
namespace {

constexpr int kWriteAfterMs = 2000;
const QString kEnding = QStringLiteral(".lumilook");
const QString kPlaceEnding = QStringLiteral(".place");  // tells where the look belongs

}  // namespace

Recovery::Recovery(Document& document, const QString& folder, QObject* parent)
    : QObject(parent), m_document(document), m_folder(folder) {
    QDir().mkpath(folder);
    m_file = folder + '/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + kEnding;
    m_lock = std::make_unique<QLockFile>(m_file + ".lock");
    m_lock->setStaleLockTime(0);
    m_lock->tryLock(0);
    m_timer.setSingleShot(true);
    m_timer.setInterval(kWriteAfterMs);
    connect(&m_timer, &QTimer::timeout, this, &Recovery::writeNow);
    connect(&document, &Document::lookChanged, this, [this] {
        if (!m_timer.isActive()) {
            m_timer.start();
        }
    });
    connect(&document, &Document::titleChanged, this, [this] {
        if (!m_document.isModified()) {
            forget();
        }
    });
}

Recovery::~Recovery() {
    if (!m_kept) {
        forget();
    }
}

void Recovery::keep() {
    writeNow();
    m_kept = true;
}

void Recovery::forget() {
    m_timer.stop();
    QFile::remove(m_file);
    QFile::remove(m_file + kPlaceEnding);
}

void Recovery::writeNow() {
    m_timer.stop();
    if (!m_document.isModified() || m_document.look().effects.empty()) {
        forget();
        return;
    }
    hostkit::Look look = m_document.look();
    look.clip = m_clip.toStdString();
    try {
        hostkit::saveLook(m_document.catalogue(), look, m_file.toStdString());
    } catch (const hostkit::LookError&) {
        return;  // a full disk is told of when the person saves
    }
    QFile place(m_file + kPlaceEnding);
    if (place.open(QIODevice::WriteOnly)) {
        place.write(m_document.file().toUtf8());
    }
}

std::optional<Recovery::Found> Recovery::findLeftover() {
    const QDir folder(m_folder);
    for (const QString& name : folder.entryList({'*' + kEnding}, QDir::Files, QDir::Time)) {
        const QString file = folder.filePath(name);
        auto lock = std::make_unique<QLockFile>(file + ".lock");
        lock->setStaleLockTime(0);
        if (file == m_file || !lock->tryLock(0)) {
            continue;  // of a program that runs
        }
        try {
            Found found{hostkit::loadLook(m_document.catalogue(), file.toStdString()), {}, file};
            QFile place(file + kPlaceEnding);
            if (place.open(QIODevice::ReadOnly)) {
                found.file = QString::fromUtf8(place.readAll());
            }
            m_foundLock = std::move(lock);
            return found;
        } catch (const hostkit::LookError&) {
            QFile::remove(file);  // what cannot be read is of no use to anybody
            QFile::remove(file + kPlaceEnding);
        }
    }
    return std::nullopt;
}

void Recovery::discard(const Found& found) {
    QFile::remove(found.kept);
    QFile::remove(found.kept + kPlaceEnding);
    m_foundLock.reset();
}

}  // namespace lumiset::studio
