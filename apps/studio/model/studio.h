#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include "apps/studio/model/document.h"
#include "apps/studio/model/export_queue.h"
#include "apps/studio/model/player.h"
#include "apps/studio/model/preview.h"
#include "apps/studio/model/recovery.h"
#include "apps/studio/model/thumbnails.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/module.h"

namespace lumiset::studio {

/// The whole program without its windows.
class Studio : public QObject {
    Q_OBJECT

    hostkit::Module m_module;  // first: all others use it
    hostkit::EffectCatalogue m_catalogue;

public:
    /// Throws `hostkit::ModuleError`.
    explicit Studio(QObject* parent = nullptr);
    ~Studio() override;

    [[nodiscard]] IEffectLibrary& effectLibrary() { return m_module.effectLibrary(); }
    [[nodiscard]] const hostkit::EffectCatalogue& catalogue() const { return m_catalogue; }
    Document document;
    Preview preview;
    Player player;
    Thumbnails thumbnails;
    ExportQueue exports;
    Recovery recovery;

    /// A file of any kind that the program reads: a clip, a picture, a look in place of the document, an effect's
    /// preset file.
    void openFile(const QString& file);
    /// Several: numbered pictures are one clip; of other clips the first opens, and `clipsOffered` asks about the rest.
    void openFiles(const QStringList& files);
    /// The effects of a look in place of the document's, as a step that can be undone.
    void applyLookFile(const QString& file);
    [[nodiscard]] static bool isLook(const QString& file);
    /// What is open; empty: nothing yet.
    [[nodiscard]] const QString& clip() const { return m_clip; }
    /// The built-in scene is there because the clip that was asked for cannot be opened.
    [[nodiscard]] bool isStandIn() const { return m_isStandIn; }
    void newDocument();
    /// Answers whether it was written; `failed` tells why not.
    bool save(const QString& file);
    bool savePreset(const QString& file);
    /// The unsaved work of a program that ended badly.
    void restoreLeftover(const Recovery::Found& found);

    [[nodiscard]] QStringList recentClips() const;
    [[nodiscard]] QStringList recentDocuments() const;

    /// How the clip is rendered to a file, in the range of the marks.
    [[nodiscard]] render::FileJob jobFor(const QString& output) const;
    /// A name for a new file, that no file and no entry of the queue has: where the last export went, or beside the
    /// clip.
    [[nodiscard]] QString proposedOutput(const QString& extension) const;
    [[nodiscard]] QString outputFor(const QString& clip, const QString& extension) const;

signals:
    void failed(const QString& sentence);
    void told(const QString& sentence);
    void clipFailed(const QString& sentence);  ///< it is there, but no clip
    void clipMissing(const QString& clip);     ///< the document's is not where it was
    void clipsOffered(const QStringList& clips);

private:
    void openClip(const QString& clip);
    void openDocument(const QString& file);
    void openPreset(const QString& file);
    static void remember(const QString& list, const QString& file);

    QString m_clip;
    bool m_isStandIn = false;
    bool m_standInWanted = false;
};

}  // namespace lumiset::studio
