#pragma once

#include <QLineEdit>

namespace lumiset::studio {

/// A number to read and to type, with its unit. It takes digits, signs and points alone, so that the window's keys work
/// while it has the keyboard. Enter takes the number, Esc gives the old one back.
class NumberField : public QLineEdit {
    Q_OBJECT

public:
    explicit NumberField(const QString& unit, QWidget* parent = nullptr);

    /// Not while somebody types.
    void showNumber(const QString& number);
    /// Begins to type.
    void begin(const QString& text);
    [[nodiscard]] bool isTyping() const { return m_typing; }

signals:
    void entered(const QString& number);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] static bool isOurs(const QKeyEvent& event);
    void showText();
    void finish(bool takes);

    QString m_unit;
    QString m_number;
    bool m_typing = false;
};

}  // namespace lumiset::studio
