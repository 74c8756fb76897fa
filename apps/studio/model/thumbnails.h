#pragma once

#include <QAbstractListModel>
#include <QImage>
#include <QTimer>
#include <memory>
#include <vector>

#include "apps/studio/core/frame_wish.h"

namespace lumiset::studio {

class Preview;
class Document;

/// Looks and presets to choose from, each with a small picture of what a click would make of the present frame.
class Thumbnails : public QAbstractListModel {
    Q_OBJECT

public:
    enum class Shelf { kLooks, kChosenEffect, kAllPresets };
    enum Role { kPictureRole = Qt::UserRole, kUnderRole, kAppliedRole };  ///< QImage; the line below; bool
    static constexpr Size kPictureSize{288, 162};                         ///< twice what is shown at scale 1

    Thumbnails(Document& document, Preview& preview, QObject* parent = nullptr);

    [[nodiscard]] Shelf shelf() const { return m_shelf; }
    void setShelf(Shelf shelf);
    void setSearch(const QString& text);
    /// What a click makes: the look to be seen while the pointer is over it.
    [[nodiscard]] LookSnapshot candidate(int row) const;
    /// Does it, as one step of the undo stack.
    void apply(int row);
    /// What could not be read, a sentence each.
    [[nodiscard]] const std::vector<std::string>& faults() const { return m_faults; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

signals:
    void shelfChanged();

private:
    struct Entry {
        QString title;
        QString under;
        std::shared_ptr<const hostkit::Look> look;  ///< of looks
        std::string effect;                         ///< of presets
        std::string preset;
        QImage picture{};
        quint64 pictureAge = 0;  ///< of what it was asked for
    };
    void fill();
    void fillPresets(const std::string& effect, bool named);
    void outdate();
    void arrived(quint64 filling, int row, QImage picture);

    Document& m_document;
    Preview& m_preview;
    Shelf m_shelf = Shelf::kLooks;
    QString m_search;
    std::vector<Entry> m_entries;
    std::vector<std::string> m_faults;
    std::string m_filledFor;
    quint64 m_filling = 0;
    quint64 m_age = 1;
    QTimer m_refresh;
};

}  // namespace lumiset::studio
