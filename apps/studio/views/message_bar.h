#pragma once

#include <QFrame>
#include <functional>

class QHBoxLayout;
class QLabel;

namespace lumiset::studio {

/// Tells what went wrong and what can be done about it, above everything else and in nobody's way. A message that
/// offers something waits behind newer ones until it is answered; one that only tells is replaced.
class MessageBar : public QFrame {
    Q_OBJECT

public:
    enum class Kind { kNote, kWarning, kError };
    struct Choice {
        QString label;
        std::function<void()> act;
    };

    explicit MessageBar(QWidget* parent = nullptr);
    /// What messages are about, for those that others make obsolete.
    enum class Topic { kAny, kClip };
    void tell(Kind kind, const QString& text, const std::vector<Choice>& choices = {}, Topic topic = Topic::kAny);
    /// Messages about it are no longer true.
    void withdraw(Topic topic);
    /// Of the one that is shown; empty without one.
    [[nodiscard]] QString text() const;
    /// Takes one of its choices, as a click would.
    void choose(int choice);

protected:
    void changeEvent(QEvent* event) override;

private:
    struct Message {
        Kind kind;
        QString text;
        std::vector<Choice> choices;
        Topic topic;
    };
    void showFirst();
    void removeFirst();
    void colourMark();

    std::vector<Message> m_messages;  ///< the newest last, which is the one that is shown
    QLabel* m_mark;
    QLabel* m_text;
    QHBoxLayout* m_choices;
};

}  // namespace lumiset::studio
