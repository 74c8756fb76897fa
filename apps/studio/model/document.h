#pragma once

#include <QObject>
#include <QString>
#include <QUndoStack>
#include <functional>
#include <optional>

#include "apps/studio/core/frame_wish.h"
#include "apps/studio/core/look_edits.h"

namespace lumiset::studio {

/// What is edited: a look, which of its effects is chosen, and the clip that it is tried on. Every change of the look
/// is one step of the undo stack, in words; changes of one gesture are one step.
class Document : public QObject {
    Q_OBJECT

public:
    /// `catalogue` must outlive the document.
    explicit Document(const hostkit::EffectCatalogue& catalogue, QObject* parent = nullptr);

    [[nodiscard]] const hostkit::EffectCatalogue& catalogue() const { return m_catalogue; }
    [[nodiscard]] const Look& look() const { return *m_look; }
    [[nodiscard]] LookSnapshot snapshot() const { return m_look; }
    [[nodiscard]] QUndoStack& undoStack() { return m_undo; }
    [[nodiscard]] bool isModified() const { return !m_undo.isClean(); }
    /// The file that it was read from or written to; empty: none yet.
    [[nodiscard]] const QString& file() const { return m_file; }
    [[nodiscard]] QString title() const;

    /// -1 without effects.
    [[nodiscard]] int selected() const { return m_selected; }
    void select(int effect);
    [[nodiscard]] const LookEffect* selectedEffect() const;
    [[nodiscard]] const EffectDescription* selectedDescription() const;

    /// The length in which keys stand, and the moment that values are shown and set for.
    void setClipSeconds(double seconds);
    [[nodiscard]] double clipSeconds() const { return m_clipSeconds; }
    void setTime(double seconds) { m_seconds = seconds; }
    [[nodiscard]] Moment moment() const { return {m_seconds, m_clipSeconds}; }

    // The stack. Effects are told by their place.
    void addEffect(const std::string& name);
    void insertEffect(const LookEffect& effect, const QString& what);
    void removeEffect(int effect);
    void duplicateEffect(int effect);
    void moveEffect(int from, int to);
    void setOff(int effect, bool off);
    void applyPreset(int effect, const std::string& preset);
    /// The effects of a look in place of those that are there.
    void applyLook(const Look& look);

    // Values of the chosen effect. A gesture is a number from `newGesture`, or 0 for a step of its own.
    [[nodiscard]] static quint64 newGesture();
    [[nodiscard]] ParamValue value(const ParameterDescription& parameter) const;
    void setValue(const ParameterDescription& parameter, const ParamValue& value, quint64 gesture = 0);
    void resetValue(const ParameterDescription& parameter);
    void resetAll();
    void setStrength(double percent, quint64 gesture = 0);
    void toggleKey(const ParameterDescription& parameter);
    void moveKey(const ParameterDescription& parameter, double from, double to, bool copies, quint64 gesture = 0);
    /// The same of all parameters that have one there.
    void moveKeys(double from, double to, bool copies, quint64 gesture = 0);
    void setKeyValue(const ParameterDescription& parameter, double at, const ParamValue& value, quint64 gesture = 0);
    void removeKey(const ParameterDescription& parameter, double at);
    void setValues(const std::vector<std::pair<std::uint32_t, ParamValue>>& values, const QString& what);

    /// A new document, or one of a file. These cannot be undone. Throw `hostkit::LookError`.
    void clear();
    void open(const QString& file);
    void save(const QString& file, const QString& clip);
    /// As if it had been changed since it was saved.
    void restore(const Look& look, const QString& file);

signals:
    void lookChanged();       ///< anything of the look
    void structureChanged();  ///< which effects there are, and whether they are off
    void selectionChanged();
    void replaced();  ///< by another document
    void titleChanged();

private:
    friend class LookChange;
    void change(const QString& text, const std::function<void(Look&)>& edit, std::optional<int> select = {},
                quint64 gesture = 0);
    void changeSelected(const QString& text, const std::function<void(const EffectDescription&, LookEffect&)>& edit,
                        quint64 gesture = 0);
    void put(const LookSnapshot& look, int selected);
    void replace(Look look, const QString& file);

    const hostkit::EffectCatalogue& m_catalogue;
    LookSnapshot m_look;
    int m_selected = -1;
    QString m_file;
    double m_clipSeconds = 1.0;
    double m_seconds = 0.0;
    QUndoStack m_undo;
};

/// Texts of the kit as Qt has them.
[[nodiscard]] inline QString toQt(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace lumiset::studio
