#include "apps/studio/model/look_change.h"

#include <utility>

#include "hostkit/look_json.h"

namespace lumiset::studio {

LookChange::LookChange(Document& document, const QString& text, State before, State after, quint64 gesture)
    : QUndoCommand(text),
      m_document(document),
      m_before(std::move(before)),
      m_after(std::move(after)),
      m_gesture(gesture) {}

void LookChange::undo() {
    m_document.put(m_before.look, m_before.selected);
}

void LookChange::redo() {
    m_document.put(m_after.look, m_after.selected);
}

bool LookChange::mergeWith(const QUndoCommand* other) {
    const auto* next = static_cast<const LookChange*>(other);
    if (next->m_gesture != m_gesture) {
        return false;
    }
    m_after = next->m_after;
    setText(next->text());
    // A gesture that ends where it began was none.
    setObsolete(hostkit::lookToJson(m_document.catalogue(), *m_before.look) ==
                hostkit::lookToJson(m_document.catalogue(), *m_after.look));
    return true;
}

}  // namespace lumiset::studio
