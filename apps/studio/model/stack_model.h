#pragma once

#include <QAbstractListModel>

namespace lumiset::studio {

class Document;

/// The effects of the document in their order, to be switched, moved and chosen.
class StackModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { kPresetRole = Qt::UserRole };  ///< "Snow (changed)"

    explicit StackModel(Document& document, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    [[nodiscard]] QStringList mimeTypes() const override;
    [[nodiscard]] QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

private:
    Document& m_document;
    int m_rows = 0;
};

}  // namespace lumiset::studio
