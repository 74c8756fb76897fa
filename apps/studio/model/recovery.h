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
    /// Nothing is left behind.
    ~Recovery() override;

    struct Found {
        hostkit::Look look;
        QString file;  ///< where the look belongs; empty: it was never saved
    };
    /// What another program left behind, which is ours from now on; the newest first.
    [[nodiscard]] std::optional<Found> takeLeftover();
    void setClip(const QString& clip) { m_clip = clip; }
    /// At once, for the end of the session by the system.
    void writeNow();

private:
    void forget();

    Document& m_document;
    QString m_folder;
    QString m_clip;
    QString m_file;
    std::unique_ptr<QLockFile> m_lock;
    QTimer m_timer;
};

}  // namespace lumiset::studio
