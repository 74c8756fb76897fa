#include "apps/studio/views/message_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include "apps/studio/views/theme.h"

namespace lumiset::studio {

MessageBar::MessageBar(QWidget* parent) : QFrame(parent) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    m_mark = new QLabel;
    m_text = new QLabel;
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* close = new QToolButton;
    close->setAutoRaise(true);
    close->setIcon(themeIcon("close"));
    close->setAccessibleName(tr("Close the message"));
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, kStep, kGap, kStep);
    layout->setSpacing(kGap);
    layout->addWidget(m_mark);
    layout->addWidget(m_text, 1);
    m_choices = new QHBoxLayout;
    layout->addLayout(m_choices);
    layout->addWidget(close);
    hide();
}

void MessageBar::tell(Kind kind, const QString& text, const std::vector<Choice>& choices) {
    const QColor ink = kind == Kind::kError     ? colors().error
                       : kind == Kind::kWarning ? colors().warning
                                                : palette().color(QPalette::Highlight);
    QPalette marked = m_mark->palette();
    marked.setColor(QPalette::WindowText, ink);
    m_mark->setPalette(marked);
    QFont bold = font();
    bold.setBold(true);
    m_mark->setFont(bold);
    m_mark->setText(kind == Kind::kError ? tr("Error") : kind == Kind::kWarning ? tr("Warning") : tr("Note"));
    m_text->setText(text);
    setAccessibleName(m_mark->text() + ": " + text);
    while (QLayoutItem* old = m_choices->takeAt(0)) {
        old->widget()->deleteLater();
        delete old;
    }
    for (const Choice& choice : choices) {
        auto* button = new QPushButton(choice.label);
        connect(button, &QPushButton::clicked, this, [this, act = choice.act] {
            hide();
            act();
        });
        m_choices->addWidget(button);
    }
    show();
}

QString MessageBar::text() const {
    return isHidden() ? QString() : m_text->text();
}

}  // namespace lumiset::studio
