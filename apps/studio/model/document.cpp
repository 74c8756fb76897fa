#include "apps/studio/model/document.h"

#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <utility>

#include "apps/studio/model/look_change.h"
#include "hostkit/look_files.h"
#include "hostkit/look_json.h"

namespace lumiset::studio {
namespace {

/// What the views of the stack show of a look.
bool sameStructure(const Look& a, const Look& b) {
    return std::equal(a.effects.begin(), a.effects.end(), b.effects.begin(), b.effects.end(),
                      [](const LookEffect& one, const LookEffect& other) {
                          return one.effect == other.effect && one.off == other.off;
                      });
}

}  // namespace

Document::Document(const hostkit::EffectCatalogue& catalogue, QObject* parent)
    : QObject(parent), m_catalogue(catalogue), m_look(std::make_shared<const Look>(Look{"Untitled"})) {
    connect(&m_undo, &QUndoStack::cleanChanged, this, &Document::titleChanged);
}

QString Document::title() const {
    return m_file.isEmpty() ? toQt(m_look->name) : QFileInfo(m_file).completeBaseName();
}

void Document::select(int effect) {
    effect = std::clamp(effect, -1, static_cast<int>(m_look->effects.size()) - 1);
    if (effect != m_selected) {
        m_selected = effect;
        emit selectionChanged();
    }
}

const LookEffect* Document::selectedEffect() const {
    return m_selected >= 0 ? &m_look->effects[static_cast<std::size_t>(m_selected)] : nullptr;
}

const EffectDescription* Document::selectedDescription() const {
    const LookEffect* effect = selectedEffect();
    return effect != nullptr ? &m_catalogue.effect(effect->effect) : nullptr;
}

void Document::setClipSeconds(double seconds) {
    m_clipSeconds = seconds;
    emit lookChanged();  // keys in parts of the clip stand elsewhere now
}

void Document::put(const LookSnapshot& look, int selected) {
    const LookSnapshot before = std::exchange(m_look, look);
    const bool structure = !sameStructure(*before, *look);
    const int chosen = std::clamp(selected, -1, static_cast<int>(look->effects.size()) - 1);
    const bool selection = chosen != m_selected;
    m_selected = chosen;
    if (structure) {
        emit structureChanged();
    }
    if (structure || selection) {
        emit selectionChanged();
    }
    emit lookChanged();
}

void Document::change(const QString& text, const std::function<void(Look&)>& edit, std::optional<int> select,
                      quint64 gesture) {
    auto changed = std::make_shared<Look>(*m_look);
    edit(*changed);
    if (gesture == 0 && hostkit::lookToJson(m_catalogue, *changed) == hostkit::lookToJson(m_catalogue, *m_look)) {
        return;
    }
    m_undo.push(new LookChange(*this, text, {m_look, m_selected}, {changed, select.value_or(m_selected)}, gesture));
}

void Document::changeSelected(const QString& text,
                              const std::function<void(const EffectDescription&, LookEffect&)>& edit, quint64 gesture) {
    if (m_selected >= 0) {
        const EffectDescription& description = *selectedDescription();
        change(
            text, [&](Look& look) { edit(description, look.effects[static_cast<std::size_t>(m_selected)]); }, {},
            gesture);
    }
}

void Document::addEffect(const std::string& name) {
    const EffectDescription& description = m_catalogue.effect(name);
    LookEffect effect{description.name};
    // The first preset behind the one that does nothing, so that there is something to see.
    const auto visible = std::find_if(description.presets.begin(), description.presets.end(),
                                      [](const auto& preset) { return preset.name != "Reset to None"; });
    if (visible != description.presets.end()) {
        effect.preset = visible->uniqueName;
    }
    insertEffect(effect, tr("Add %1").arg(toQt(description.name)));
}

void Document::insertEffect(const LookEffect& effect, const QString& what) {
    const int place = m_selected + 1;
    change(
        what, [&](Look& look) { look.effects.insert(look.effects.begin() + place, effect); }, place);
}

void Document::removeEffect(int effect) {
    const auto place = static_cast<std::size_t>(effect);
    if (place < m_look->effects.size()) {
        change(
            tr("Remove %1").arg(toQt(m_look->effects[place].effect)), [&](Look& look) { look = without(look, place); },
            std::min(effect, static_cast<int>(m_look->effects.size()) - 2));
    }
}

void Document::duplicateEffect(int effect) {
    const auto place = static_cast<std::size_t>(effect);
    if (place < m_look->effects.size()) {
        const LookEffect copy = m_look->effects[place];
        change(
            tr("Duplicate %1").arg(toQt(copy.effect)),
            [&](Look& look) { look.effects.insert(look.effects.begin() + effect + 1, copy); }, effect + 1);
    }
}

void Document::moveEffect(int from, int to) {
    const int count = static_cast<int>(m_look->effects.size());
    if (from < 0 || from >= count || to < 0 || to >= count || from == to) {
        return;
    }
    change(
        tr("Move %1").arg(toQt(m_look->effects[static_cast<std::size_t>(from)].effect)),
        [&](Look& look) {
            const auto begin = look.effects.begin();
            if (from < to) {
                std::rotate(begin + from, begin + from + 1, begin + to + 1);
            } else {
                std::rotate(begin + to, begin + from, begin + from + 1);
            }
        },
        to);
}

void Document::setOff(int effect, bool off) {
    const auto place = static_cast<std::size_t>(effect);
    if (place < m_look->effects.size()) {
        change((off ? tr("Switch %1 off") : tr("Switch %1 on")).arg(toQt(m_look->effects[place].effect)),
               [&](Look& look) { look.effects[place].off = off; });
    }
}

void Document::applyPreset(int effect, const std::string& preset) {
    const auto place = static_cast<std::size_t>(effect);
    if (place < m_look->effects.size()) {
        change(tr("Preset %1 (%2)").arg(toQt(preset), toQt(m_look->effects[place].effect)), [&](Look& look) {
            look.effects[place].preset = preset;
            look.effects[place].parameters.clear();
        });
    }
}

void Document::applyLook(const Look& look) {
    change(
        tr("Look %1").arg(toQt(look.name)),
        [&](Look& changed) {
            changed.strength = look.strength;
            changed.effects = look.effects;
        },
        look.effects.empty() ? -1 : 0);
}

quint64 Document::newGesture() {
    static std::atomic<quint64> last{0};
    return ++last;
}

ParamValue Document::value(const ParameterDescription& parameter) const {
    return valueAt(*selectedDescription(), *selectedEffect(), parameter, moment());
}

void Document::setValue(const ParameterDescription& parameter, const ParamValue& value, quint64 gesture) {
    changeSelected(
        tr("Set %1 to %2 (%3)")
            .arg(toQt(parameter.label), toQt(valueText(parameter, value)),
                 m_selected >= 0 ? toQt(selectedEffect()->effect) : QString()),
        [&](const EffectDescription& description, LookEffect& effect) {
            studio::setValue(description, effect, parameter, value, moment());
        },
        gesture);
}

void Document::resetValue(const ParameterDescription& parameter) {
    changeSelected(tr("Reset %1").arg(toQt(parameter.label)),
                   [&](const EffectDescription&, LookEffect& effect) { studio::resetValue(effect, parameter.index); });
}

void Document::resetAll() {
    changeSelected(tr("Reset all values"), [](const EffectDescription&, LookEffect& effect) {
        effect.parameters.clear();
        effect.strength = 100.0;
    });
}

void Document::setStrength(double percent, quint64 gesture) {
    changeSelected(
        tr("Set strength to %1 %").arg(percent),
        [&](const EffectDescription&, LookEffect& effect) { effect.strength = percent; }, gesture);
}

void Document::toggleKey(const ParameterDescription& parameter) {
    const LookEffect* chosen = selectedEffect();
    const bool here = chosen != nullptr && keyStateAt(*chosen, parameter.index, moment()) == KeyState::kHere;
    changeSelected((here ? tr("Remove key of %1") : tr("Add key of %1")).arg(toQt(parameter.label)),
                   [&](const EffectDescription& description, LookEffect& effect) {
                       studio::toggleKey(description, effect, parameter, moment());
                   });
}

void Document::moveKey(const ParameterDescription& parameter, double from, double to, bool copies, quint64 gesture) {
    changeSelected((copies ? tr("Copy key of %1") : tr("Move key of %1")).arg(toQt(parameter.label)),
                   [&](const EffectDescription&, LookEffect& effect) {
                       studio::moveKey(effect, parameter.index, {from, m_clipSeconds}, to, copies);
                   },
                   gesture);
}

void Document::moveKeys(double from, double to, bool copies, quint64 gesture) {
    changeSelected(
        copies ? tr("Copy keys") : tr("Move keys"),
        [&](const EffectDescription& description, LookEffect& effect) {
            for (const ParameterDescription& parameter : description.parameters) {
                studio::moveKey(effect, parameter.index, {from, m_clipSeconds}, to, copies);
            }
        },
        gesture);
}

void Document::setKeyValue(const ParameterDescription& parameter, double at, const ParamValue& value, quint64 gesture) {
    changeSelected(
        tr("Set key of %1 to %2").arg(toQt(parameter.label), toQt(valueText(parameter, value))),
        [&](const EffectDescription&, LookEffect& effect) {
            studio::setKeyValue(effect, parameter.index, {at, m_clipSeconds}, value);
        },
        gesture);
}

void Document::removeKey(const ParameterDescription& parameter, double at) {
    changeSelected(tr("Remove key of %1").arg(toQt(parameter.label)),
                   [&](const EffectDescription& description, LookEffect& effect) {
                       const Moment there{at, m_clipSeconds};
                       if (keyStateAt(effect, parameter.index, there) == KeyState::kHere) {
                           studio::toggleKey(description, effect, parameter, there);
                       }
                   });
}

void Document::setValues(const std::vector<std::pair<std::uint32_t, ParamValue>>& values, const QString& what) {
    changeSelected(what, [&](const EffectDescription& description, LookEffect& effect) {
        for (const auto& [index, value] : values) {
            studio::resetValue(effect, index);
            studio::setValue(description, effect, *description.parameterAt(index), value, moment());
        }
    });
}

void Document::replace(Look look, const QString& file) {
    m_undo.clear();
    m_file = file;
    m_selected = -1;
    const int first = look.effects.empty() ? -1 : 0;
    put(std::make_shared<const Look>(std::move(look)), first);
    emit structureChanged();
    emit selectionChanged();
    emit replaced();
    emit titleChanged();
}

void Document::clear() {
    replace(Look{"Untitled"}, {});
}

void Document::open(const QString& file) {
    replace(hostkit::loadLook(m_catalogue, file.toStdString()), file);
}

void Document::restore(const Look& look, const QString& file) {
    replace(look, file);
    m_undo.resetClean();
    emit titleChanged();
}

void Document::save(const QString& file, const QString& clip) {
    auto named = std::make_shared<Look>(*m_look);
    named->clip = clip.toStdString();
    if (m_file != file) {
        named->name = QFileInfo(file).completeBaseName().toStdString();
    }
    hostkit::saveLook(m_catalogue, *named, file.toStdString());
    m_look = named;
    m_file = file;
    m_undo.setClean();
    emit titleChanged();
}

}  // namespace lumiset::studio
