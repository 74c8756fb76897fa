#pragma once

#include <QLockFile>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <optional>

#include "hostkit/look.h"

namespace lumiset::studio {

class Document;

/// Keeps what has not been saved in a file of its own, a moment behind every change, and finds what a program that
/// ended badly has left behind.
class Recovery : public QObject {
    Q_OBJECT

public:
    /// In `folder`, which is made.
    Recovery(Document& document, const QString& folder, QObject* parent = nullptr);
    /// Nothing is left behind but what `keep` was for.
    ~Recovery() override;

    struct Found {
        hostkit::Look look;
        QString file;  ///< where the look belongs; empty: it was never saved
        QString kept;  ///< where it was found
    };
    /// What another program left behind, the newest first. It stays where it is, and no other program's to find, until
    /// it is discarded or this one ends.
    [[nodiscard]] std::optional<Found> findLeftover();
    void discard(const Found& found);
    void setClip(const QString& clip) { m_clip = clip; }
    void writeNow();
    /// Leaves what is not saved to be found, for a program that the system ends.
    void keep();

private:
    void forget();

    Document& m_document;
    QString m_folder;
    QString m_clip;
    QString m_file;
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<QLockFile> m_foundLock;
    QTimer m_timer;
    bool m_kept = false;
};

}  // namespace lumiset::studio
