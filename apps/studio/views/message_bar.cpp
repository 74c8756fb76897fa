#include "apps/studio/views/message_bar.h"

#include <QEvent>
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
    QFont bold = font();
    bold.setBold(true);
    m_mark->setFont(bold);
    m_text = new QLabel;
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* close = new QToolButton;
    close->setAutoRaise(true);
    close->setIcon(themeIcon("close"));
    close->setAccessibleName(tr("Close the message"));
    connect(close, &QToolButton::clicked, this, &MessageBar::removeFirst);
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

void MessageBar::tell(Kind kind, const QString& text, const std::vector<Choice>& choices, Topic topic) {
    std::erase_if(m_messages, [&](const Message& each) { return each.choices.empty() || each.text == text; });
    m_messages.push_back({kind, text, choices, topic});
    showFirst();
}

void MessageBar::withdraw(Topic topic) {
    std::erase_if(m_messages, [topic](const Message& each) { return each.topic == topic; });
    showFirst();
}

void MessageBar::removeFirst() {
    m_messages.pop_back();
    showFirst();
}

void MessageBar::choose(int choice) {
    const auto act = m_messages.back().choices[static_cast<std::size_t>(choice)].act;
    removeFirst();
    act();
}

void MessageBar::showFirst() {
    while (QLayoutItem* old = m_choices->takeAt(0)) {
        old->widget()->deleteLater();
        delete old;
    }
    if (m_messages.empty()) {
        hide();
        return;
    }
    const Message& message = m_messages.back();
    colourMark();
    m_mark->setText(message.kind == Kind::kError     ? tr("Error")
                    : message.kind == Kind::kWarning ? tr("Warning")
                                                     : tr("Note"));
    m_text->setText(message.text);
    setAccessibleName(m_mark->text() + ": " + message.text);
    for (std::size_t i = 0; i < message.choices.size(); ++i) {
        auto* button = new QPushButton(message.choices[i].label);
        connect(button, &QPushButton::clicked, this, [this, i] { choose(static_cast<int>(i)); });
        m_choices->addWidget(button);
    }
    show();
}

void MessageBar::colourMark() {
    const Kind kind = m_messages.back().kind;
    QPalette marked;
    marked.setColor(QPalette::WindowText, kind == Kind::kError     ? colors().error
                                          : kind == Kind::kWarning ? colors().warning
                                                                   : palette().color(QPalette::Highlight));
    m_mark->setPalette(marked);
}

void MessageBar::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_messages.empty()) {
        colourMark();
    }
}

QString MessageBar::text() const {
    return m_messages.empty() ? QString() : m_messages.back().text;
}

}  // namespace lumiset::studio
