#pragma once

#include <QUndoCommand>

#include "apps/studio/model/document.h"

namespace lumiset::studio {

/// A step of the undo stack: the look before and behind it, whole. Looks are small, and nothing is lost between two.
class LookChange : public QUndoCommand {
public:
    struct State {
        LookSnapshot look;
        int selected;
    };
    LookChange(Document& document, const QString& text, State before, State after, quint64 gesture);

    void undo() override;
    void redo() override;
    [[nodiscard]] int id() const override { return m_gesture != 0 ? 1 : -1; }
    bool mergeWith(const QUndoCommand* other) override;

private:
    Document& m_document;
    State m_before;
    State m_after;
    quint64 m_gesture;
};

}  // namespace lumiset::studio
