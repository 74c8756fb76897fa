#pragma once

#include <QFrame>
#include <functional>

class QHBoxLayout;
class QLabel;

namespace lumiset::studio {

/// Tells what went wrong and what can be done about it, above everything else and in nobody's way.
class MessageBar : public QFrame {
    Q_OBJECT

public:
    enum class Kind { kNote, kWarning, kError };
    struct Choice {
        QString label;
        std::function<void()> act;
    };

    explicit MessageBar(QWidget* parent = nullptr);
    /// In place of what it says now.
    void tell(Kind kind, const QString& text, const std::vector<Choice>& choices = {});
    [[nodiscard]] QString text() const;

private:
    QLabel* m_mark;
    QLabel* m_text;
    QHBoxLayout* m_choices;
};

}  // namespace lumiset::studio
