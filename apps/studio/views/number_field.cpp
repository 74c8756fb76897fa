#include "apps/studio/views/number_field.h"

#include <QKeyEvent>
#include <QWheelEvent>

#include "apps/studio/views/theme.h"

namespace lumiset::studio {

NumberField::NumberField(const QString& unit, QWidget* parent) : QLineEdit(parent), m_unit(unit) {
    setAlignment(Qt::AlignRight);
    setFixedWidth(fontMetrics().horizontalAdvance("-000.00 %") + 2 * kGap);
    setFixedHeight(22);
    setContextMenuPolicy(Qt::NoContextMenu);
}

void NumberField::showText() {
    setText(m_unit.isEmpty() ? m_number : m_unit == "%" ? m_number + " %" : m_number + m_unit);
    setCursorPosition(0);
}

void NumberField::showNumber(const QString& number) {
    if (number != m_number || text().isEmpty()) {
        m_number = number;
        if (!m_typing) {
            showText();
        }
    }
}

void NumberField::begin(const QString& text) {
    setFocus();
    m_typing = true;
    setText(text);
    if (text == m_number) {
        selectAll();
    }
}

void NumberField::finish(bool takes) {
    if (!m_typing) {
        return;
    }
    m_typing = false;
    QString typed = text().trimmed();
    typed.replace(',', '.');
    showText();
    if (takes && !typed.isEmpty() && typed != m_number) {
        emit entered(typed);
    }
}

bool NumberField::isOurs(const QKeyEvent& event) {
    switch (event.key()) {
        case Qt::Key_Backspace:
        case Qt::Key_Delete:
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            return true;
        default:
            break;
    }
    if (event.matches(QKeySequence::Copy) || event.matches(QKeySequence::Paste) ||
        event.matches(QKeySequence::SelectAll)) {
        return true;
    }
    const QString text = event.text();
    return text.size() == 1 && (text[0].isDigit() || QStringLiteral("+-.,").contains(text[0])) &&
           !(event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
}

bool NumberField::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        // The line edit would claim every letter.
        event->setAccepted(m_typing ? isOurs(*static_cast<QKeyEvent*>(event))
                                    : !static_cast<QKeyEvent*>(event)->text().isEmpty() &&
                                          (static_cast<QKeyEvent*>(event)->text()[0].isDigit()));
        return true;
    }
    return QLineEdit::event(event);
}

void NumberField::keyPressEvent(QKeyEvent* event) {
    if (!isOurs(*event)) {
        event->ignore();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (m_typing) {
            finish(true);
            window()->setFocus();
        } else {
            begin(m_number);
        }
    } else if (event->key() == Qt::Key_Escape) {
        if (m_typing) {
            finish(false);
        } else {
            event->ignore();
        }
    } else {
        if (!m_typing) {
            begin(event->text().isEmpty() ? m_number : QString());
        }
        QLineEdit::keyPressEvent(event);
    }
}

void NumberField::mousePressEvent(QMouseEvent* event) {
    if (m_typing) {
        QLineEdit::mousePressEvent(event);
    } else {
        begin(m_number);
    }
}

void NumberField::focusOutEvent(QFocusEvent* event) {
    finish(true);
    QLineEdit::focusOutEvent(event);
}

void NumberField::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

}  // namespace lumiset::studio
