#include "apps/studio/views/stack_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <algorithm>

#include "apps/studio/model/stack_model.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

constexpr int kGripWidth = 16;
constexpr int kBoxSize = 16;

/// A grip, a check box, the effect and its preset.
class StackDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) const override {
        return {100, kRowHeight + kStep};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const bool chosen = option.state.testFlag(QStyle::State_Selected);
        const bool on = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        const QColor ink = option.palette.color(chosen ? QPalette::HighlightedText : QPalette::Text);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QRectF row = QRectF(option.rect).adjusted(kStep, 1, -kStep, -1);
        if (chosen) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(option.palette.color(QPalette::Highlight));
            painter->drawRoundedRect(row, 4, 4);
        }
        QColor pale = ink;
        pale.setAlphaF(0.45F);
        painter->setPen(Qt::NoPen);
        painter->setBrush(pale);
        for (const int x : {6, 10}) {
            for (const int y : {-4, 0, 4}) {
                painter->drawEllipse(QPointF(row.left() + x, row.center().y() + y), 1.1, 1.1);
            }
        }
        const QRectF box = boxRect(option.rect);
        painter->setPen(QPen(ink, 1.3));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(box, 3, 3);
        if (on) {
            painter->setPen(QPen(ink, 2));
            painter->drawPolyline(QPolygonF(
                {box.topLeft() + QPointF(3, 7), box.topLeft() + QPointF(6, 10), box.topLeft() + QPointF(11, 4)}));
        }
        const QRectF text(box.right() + kGap, row.top(), row.right() - box.right() - 2 * kGap, row.height());
        QFont bold = option.font;
        bold.setBold(true);
        painter->setFont(bold);
        painter->setPen(on ? ink : pale);
        const QString name = index.data(Qt::DisplayRole).toString();
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter, name);
        const double used = QFontMetricsF(bold).horizontalAdvance(name) + kGap;
        painter->setFont(option.font);
        QColor second = chosen ? ink : colors().secondText;
        second.setAlphaF(on ? 1.0F : 0.6F);
        painter->setPen(second);
        const QString preset = on ? index.data(StackModel::kPresetRole).toString() : QObject::tr("off");
        painter->drawText(
            text.adjusted(used, 0, 0, 0), Qt::AlignRight | Qt::AlignVCenter,
            QFontMetrics(option.font).elidedText(preset, Qt::ElideRight, static_cast<int>(text.width() - used)));
        painter->restore();
    }

    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override {
        const bool click =
            event->type() == QEvent::MouseButtonRelease &&
            boxRect(option.rect).adjusted(-4, -4, 4, 4).contains(static_cast<QMouseEvent*>(event)->position());
        if (!click) {
            return false;
        }
        const bool on = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
        return model->setData(index, on ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    }

private:
    static QRectF boxRect(const QRect& row) {
        return {static_cast<double>(row.left() + kStep + kGripWidth + kStep), row.center().y() - kBoxSize / 2.0 + 1.0,
                14.0, 14.0};
    }
};

}  // namespace

StackView::StackView(Studio& studio, StackModel& model, QWidget* parent) : QListView(parent), m_studio(studio) {
    setModel(&model);
    setItemDelegate(new StackDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(SingleSelection);
    setDragDropMode(InternalMove);
    setDragDropOverwriteMode(false);
    setDropIndicatorShown(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Effects"));
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&studio.document, &Document::selectionChanged, this, &StackView::follow);
    connect(&model, &QAbstractItemModel::modelReset, this, [this] {
        updateGeometry();
        follow();
    });
    follow();
}

QSize StackView::sizeHint() const {
    return {360, std::clamp(model()->rowCount(), 2, 6) * (kRowHeight + kStep) + kStep};
}

void StackView::follow() {
    const QModelIndex chosen = model()->index(m_studio.document.selected(), 0);
    if (chosen != currentIndex()) {
        setCurrentIndex(chosen);
    }
}

void StackView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QListView::currentChanged(current, previous);
    if (current.isValid()) {
        m_studio.document.select(current.row());
    }
}

bool StackView::event(QEvent* event) {
    // Lists look for rows by their first letter, and would take the window's keys for that.
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool moves = key->key() == Qt::Key_Up || key->key() == Qt::Key_Down || key->key() == Qt::Key_Tab ||
                           key->key() == Qt::Key_Backtab;
        if (!moves) {
            event->ignore();
            return false;
        }
    }
    return QListView::event(event);
}

}  // namespace lumiset::studio
