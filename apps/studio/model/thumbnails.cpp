#include "apps/studio/model/thumbnails.h"

#include <QMetaObject>
#include <utility>

#include "apps/studio/model/document.h"
#include "apps/studio/model/picture_image.h"
#include "apps/studio/model/preview.h"
#include "hostkit/look_files.h"

namespace lumiset::studio {
namespace {

constexpr int kRefreshAfterMs = 400;

}  // namespace

Thumbnails::Thumbnails(Document& document, Preview& preview, QObject* parent)
    : QAbstractListModel(parent), m_document(document), m_preview(preview) {
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(kRefreshAfterMs);
    connect(&m_refresh, &QTimer::timeout, this, &Thumbnails::outdate);
    connect(&preview, &Preview::frameChanged, &m_refresh, qOverload<>(&QTimer::start));
    connect(&preview, &Preview::clipOpened, &m_refresh, qOverload<>(&QTimer::start));
    connect(&document, &Document::lookChanged, this, [this] {
        // The applied one is marked at once; pictures of looks do not depend on the document's.
        if (rowCount() > 0) {
            emit dataChanged(index(0), index(rowCount() - 1), {kAppliedRole});
        }
        if (m_shelf != Shelf::kLooks) {
            m_refresh.start();
        }
    });
    connect(&document, &Document::selectionChanged, this, [this] {
        if (m_shelf == Shelf::kChosenEffect) {
            fill();
        }
    });
    fill();
}

void Thumbnails::setShelf(Shelf shelf) {
    if (shelf != m_shelf) {
        m_shelf = shelf;
        fill();
        emit shelfChanged();
    }
}

void Thumbnails::setSearch(const QString& text) {
    m_search = text.trimmed();
    fill();
}

void Thumbnails::fillPresets(const std::string& effect, bool named) {
    for (const hostkit::PresetDescription& preset : m_document.catalogue().effect(effect).presets) {
        m_entries.push_back(
            {toQt(preset.uniqueName), named ? toQt(effect) : QString(), nullptr, effect, preset.uniqueName});
    }
}

void Thumbnails::fill() {
    beginResetModel();
    ++m_filling;
    m_preview.engine().clearThumbnails();
    m_entries.clear();
    if (m_shelf == Shelf::kLooks) {
        m_faults.clear();
        for (const hostkit::KnownLook& known : hostkit::knownLooks(m_document.catalogue(), m_faults)) {
            m_entries.push_back({toQt(known.look.name),
                                 toQt(known.look.about),
                                 std::make_shared<const hostkit::Look>(known.look),
                                 {},
                                 {}});
        }
    } else if (m_shelf == Shelf::kAllPresets) {
        for (const hostkit::EffectDescription& effect : m_document.catalogue().effects()) {
            fillPresets(effect.name, true);
        }
    } else if (const LookEffect* chosen = m_document.selectedEffect()) {
        fillPresets(chosen->effect, false);
    }
    if (!m_search.isEmpty()) {
        std::erase_if(m_entries, [this](const Entry& each) {
            return !each.title.contains(m_search, Qt::CaseInsensitive) &&
                   !each.under.contains(m_search, Qt::CaseInsensitive);
        });
    }
    endResetModel();
}

void Thumbnails::outdate() {
    ++m_age;
    m_preview.engine().clearThumbnails();
    if (rowCount() > 0) {
        emit dataChanged(index(0), index(rowCount() - 1), {kPictureRole});
    }
}

LookSnapshot Thumbnails::candidate(int row) const {
    const Entry& entry = m_entries[static_cast<std::size_t>(row)];
    if (entry.look != nullptr) {
        return entry.look;
    }
    auto look = std::make_shared<Look>(m_document.look());
    const LookEffect* chosen = m_document.selectedEffect();
    if (chosen != nullptr && chosen->effect == entry.effect) {
        LookEffect& place = look->effects[static_cast<std::size_t>(m_document.selected())];
        place.preset = entry.preset;
        place.parameters.clear();
    } else {
        look->effects.insert(look->effects.begin() + m_document.selected() + 1, LookEffect{entry.effect, entry.preset});
    }
    return look;
}

void Thumbnails::apply(int row) {
    const Entry entry = m_entries[static_cast<std::size_t>(row)];  // a copy: the entries may be filled anew meanwhile
    const LookEffect* chosen = m_document.selectedEffect();
    if (entry.look != nullptr) {
        m_document.applyLook(*entry.look);
    } else if (chosen != nullptr && chosen->effect == entry.effect) {
        m_document.applyPreset(m_document.selected(), entry.preset);
    } else {
        m_document.insertEffect(LookEffect{entry.effect, entry.preset},
                                tr("Add %1: %2").arg(toQt(entry.effect), toQt(entry.preset)));
    }
}

int Thumbnails::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant Thumbnails::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Entry& entry = m_entries[static_cast<std::size_t>(index.row())];
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return entry.title;
        case Qt::ToolTipRole:
            return entry.under.isEmpty() ? entry.title : entry.title + "\n" + entry.under;
        case kUnderRole:
            return entry.look ? QString() : entry.under;
        case kAppliedRole: {
            const LookEffect* chosen = m_document.selectedEffect();
            return entry.look == nullptr && chosen != nullptr && chosen->effect == entry.effect &&
                   chosen->preset == entry.preset;
        }
        case kPictureRole: {
            // Only what a view shows is asked for, so only that is rendered.
            auto* self = const_cast<Thumbnails*>(this);
            Entry& place = self->m_entries[static_cast<std::size_t>(index.row())];
            if (place.pictureAge != m_age && m_preview.clip() != nullptr) {
                place.pictureAge = m_age;
                FrameWish wish;
                wish.frame = m_preview.frame();
                wish.size = kPictureSize;
                wish.look = candidate(index.row());
                m_preview.engine().addThumbnail(wish, [self, filling = m_filling, row = index.row()](FrameShot&& shot) {
                    if (shot.picture != nullptr) {
                        QMetaObject::invokeMethod(
                            self,
                            [self, filling, row, image = imageOf(shot.picture)] { self->arrived(filling, row, image); },
                            Qt::QueuedConnection);
                    }
                });
            }
            return entry.picture;
        }
        default:
            return {};
    }
}

void Thumbnails::arrived(quint64 filling, int row, QImage picture) {
    if (filling == m_filling && row < rowCount()) {
        m_entries[static_cast<std::size_t>(row)].picture = std::move(picture);
        emit dataChanged(index(row), index(row), {kPictureRole});
    }
}

}  // namespace lumiset::studio
