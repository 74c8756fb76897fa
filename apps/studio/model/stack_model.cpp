#include "apps/studio/model/stack_model.h"

#include <QMimeData>
#include <algorithm>

#include "apps/studio/model/document.h"

namespace lumiset::studio {
namespace {

const QString kRowType = QStringLiteral("application/x-lumiset-stack-row");

}  // namespace

StackModel::StackModel(Document& document, QObject* parent) : QAbstractListModel(parent), m_document(document) {
    m_rows = static_cast<int>(document.look().effects.size());
    connect(&document, &Document::structureChanged, this, [this] {
        beginResetModel();
        m_rows = static_cast<int>(m_document.look().effects.size());
        endResetModel();
    });
    connect(&document, &Document::lookChanged, this, [this] {
        if (m_rows > 0) {
            emit dataChanged(index(0), index(m_rows - 1));
        }
    });
}

int StackModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

QVariant StackModel::data(const QModelIndex& index, int role) const {
    const auto row = static_cast<std::size_t>(index.row());
    if (!index.isValid() || row >= m_document.look().effects.size()) {
        return {};
    }
    const LookEffect& effect = m_document.look().effects[row];
    const bool keyed = std::any_of(effect.parameters.begin(), effect.parameters.end(),
                                   [](const LookParameter& each) { return !each.keys.empty(); });
    const QString preset = effect.preset.empty() ? tr("Defaults") : toQt(effect.preset);
    switch (role) {
        case Qt::DisplayRole:
            return toQt(effect.effect);
        case Qt::CheckStateRole:
            return effect.off ? Qt::Unchecked : Qt::Checked;
        case kPresetRole:
            return (effect.parameters.empty() ? preset : tr("%1 (changed)").arg(preset)) +
                   (keyed ? QStringLiteral(" ◆") : QString());
        case Qt::AccessibleTextRole:
            return toQt(effect.effect) + ", " + data(index, kPresetRole).toString() +
                   (effect.off ? ", " + tr("off") : QString());
        case Qt::ToolTipRole:
            return tr("%1: %2").arg(toQt(effect.effect), data(index, kPresetRole).toString());
        default:
            return {};
    }
}

bool StackModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::CheckStateRole) {
        return false;
    }
    m_document.setOff(index.row(), value.toInt() == Qt::Unchecked);
    return true;
}

Qt::ItemFlags StackModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsDragEnabled
                           : Qt::ItemIsDropEnabled;
}

QStringList StackModel::mimeTypes() const {
    return {kRowType};
}

QMimeData* StackModel::mimeData(const QModelIndexList& indexes) const {
    auto* data = new QMimeData;
    data->setData(kRowType, QByteArray::number(indexes.isEmpty() ? -1 : indexes.front().row()));
    return data;
}

// The document moves its effect, and with that this model changes: the view is to remove nothing, so it hears that
// nothing was dropped.
bool StackModel::dropMimeData(const QMimeData* data, Qt::DropAction /*action*/, int row, int /*column*/,
                              const QModelIndex& parent) {
    const int from = data->data(kRowType).toInt();
    int to = row >= 0 ? row : parent.isValid() ? parent.row() : m_rows;
    to -= to > from ? 1 : 0;
    QMetaObject::invokeMethod(
        this, [this, from, to] { m_document.moveEffect(from, to); }, Qt::QueuedConnection);
    return false;
}

}  // namespace lumiset::studio
