#include "apps/studio/views/strip.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

constexpr QSize kPicture(144, 81);
constexpr int kLabelHeight = 18;
constexpr int kHoverMs = 150;

class ThumbnailDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) const override {
        return {kPicture.width() + kGap, kPicture.height() + kLabelHeight + kGap};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        const QRect place(option.rect.left() + kStep, option.rect.top() + kStep, kPicture.width(), kPicture.height());
        const QImage picture = index.data(Thumbnails::kPictureRole).value<QImage>();
        painter->fillRect(place, colors().surround);
        if (!picture.isNull()) {
            const QSizeF size = QSizeF(picture.size()).scaled(QSizeF(place.size()), Qt::KeepAspectRatio);
            const QRectF shown(QPointF(place.center()) + QPointF(0.5 - size.width() / 2, 0.5 - size.height() / 2),
                               size);
            if (picture.hasAlphaChannel()) {
                painter->fillRect(shown, QColor(130, 130, 130));
            }
            painter->drawImage(shown, picture);
        }
        const bool applied = index.data(Thumbnails::kAppliedRole).toBool();
        const bool chosen =
            option.state.testFlag(QStyle::State_HasFocus) || option.state.testFlag(QStyle::State_MouseOver);
        if (applied || chosen) {
            painter->setPen(QPen(option.palette.color(QPalette::Highlight), 2));
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(QRectF(place).adjusted(-1, -1, 1, 1), 3, 3);
        }
        if (applied) {
            const QRectF mark(place.right() - 18, place.top() + 4, 14, 14);
            painter->setPen(Qt::NoPen);
            painter->setBrush(option.palette.color(QPalette::Highlight));
            painter->drawEllipse(mark);
            painter->setPen(QPen(option.palette.color(QPalette::HighlightedText), 1.8));
            painter->drawPolyline(QPolygonF{mark.topLeft() + QPointF(3.6, 7.2), mark.topLeft() + QPointF(6, 9.6),
                                            mark.topLeft() + QPointF(10.4, 4.6)});
        }
        const QRect text(place.left(), place.bottom() + 2, place.width(), kLabelHeight);
        const QString under = index.data(Thumbnails::kUnderRole).toString();
        const QString title = index.data(Qt::DisplayRole).toString();
        const QFontMetrics metrics(option.font);
        painter->setPen(option.palette.color(QPalette::WindowText));
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                          metrics.elidedText(title, Qt::ElideRight, text.width()));
        const int used = metrics.horizontalAdvance(title) + kGap;
        if (!under.isEmpty() && used < text.width() - 30) {
            painter->setPen(colors().secondText);
            painter->drawText(text.adjusted(used, 0, 0, 0), Qt::AlignRight | Qt::AlignVCenter,
                              metrics.elidedText(under, Qt::ElideRight, text.width() - used));
        }
        painter->restore();
    }
};

}  // namespace

Strip::Strip(Studio& studio, QWidget* parent) : QWidget(parent), m_studio(studio) {
    m_tabs = new QTabBar;
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    m_tabs->addTab(tr("Looks"));
    m_tabs->addTab(tr("This Effect"));
    std::size_t presets = 0;
    for (const EffectDescription& effect : studio.catalogue().effects()) {
        presets += effect.presets.size();
    }
    m_tabs->addTab(tr("All %1 Presets").arg(presets));
    m_tabs->setAccessibleName(tr("What the pictures show"));
    m_search = new QLineEdit;
    m_search->setPlaceholderText(tr("Search"));
    m_search->setClearButtonEnabled(true);
    m_search->setMaximumWidth(220);
    m_search->setAccessibleName(tr("Search for a look or preset"));
    m_search->installEventFilter(this);
    m_list = new QListView;
    m_list->setModel(&studio.thumbnails);
    m_list->setItemDelegate(new ThumbnailDelegate(this));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setFlow(QListView::LeftToRight);
    m_list->setWrapping(true);
    m_list->setResizeMode(QListView::Adjust);
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setAccessibleName(tr("Looks and presets"));
    m_list->viewport()->setAutoFillBackground(false);
    m_list->viewport()->installEventFilter(this);
    m_list->installEventFilter(this);

    auto* head = new QHBoxLayout;
    head->setContentsMargins(kGap, 0, kGap, 0);
    head->addWidget(m_tabs);
    head->addStretch(1);
    head->addWidget(m_search);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, kStep, 0, 0);
    layout->setSpacing(kStep);
    layout->addLayout(head);
    layout->addWidget(m_list, 1);

    m_hover.setSingleShot(true);
    m_hover.setInterval(kHoverMs);
    connect(&m_hover, &QTimer::timeout, this, [this] {
        if (m_hovered >= 0 && m_hovered < m_studio.thumbnails.rowCount()) {
            m_studio.preview.setCandidate(m_studio.thumbnails.candidate(m_hovered));
        }
    });
    connect(m_tabs, &QTabBar::currentChanged, this,
            [this](int tab) { m_studio.thumbnails.setShelf(static_cast<Thumbnails::Shelf>(tab)); });
    connect(&studio.thumbnails, &QAbstractItemModel::modelReset, this, [this] { hover(-1); });
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!text.isEmpty() && m_tabs->currentIndex() == 1) {
            m_tabs->setCurrentIndex(2);
        }
        m_studio.thumbnails.setSearch(text);
    });
    connect(m_list, &QListView::clicked, this, [this](const QModelIndex& index) {
        hover(-1);
        m_studio.thumbnails.apply(index.row());
    });
    connect(m_list, &QListView::entered, this, [this](const QModelIndex& index) { hover(index.row()); });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& index) {
        if (m_list->hasFocus()) {
            hover(index.row());
        }
    });
}

void Strip::focusSearch() {
    m_search->setFocus();
    m_search->selectAll();
}

void Strip::hover(int row) {
    m_hovered = row;
    if (row >= 0) {
        m_hover.start();
    } else {
        m_hover.stop();
        m_studio.preview.setCandidate(nullptr);
    }
}

bool Strip::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_list->viewport()) {
        if (event->type() == QEvent::Leave) {
            hover(-1);
        } else if (event->type() == QEvent::MouseMove) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            if (!m_list->indexAt(mouse->position().toPoint()).isValid()) {
                hover(-1);
            }
        }
    } else if (watched == m_list && event->type() == QEvent::FocusOut) {
        hover(-1);
    } else if (watched == m_list && event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Home || key == Qt::Key_End) {
            event->accept();  // they go from picture to picture here
            return true;
        }
    } else if (watched == m_list && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && m_list->currentIndex().isValid()) {
            const int row = m_list->currentIndex().row();
            hover(-1);
            m_studio.thumbnails.apply(row);
            return true;
        }
        if (!key->text().isEmpty() && key->text()[0].isPrint() && key->key() != Qt::Key_Tab &&
            key->key() != Qt::Key_Backtab) {
            event->ignore();  // the window's keys
            return true;
        }
    } else if (watched == m_search && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter) {
            m_list->setFocus();
            m_list->setCurrentIndex(m_studio.thumbnails.index(0));
            return true;
        }
        if (key == Qt::Key_Escape) {
            m_search->clear();
            m_list->setFocus();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace lumiset::studio
