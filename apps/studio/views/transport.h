#pragma once

#include <QWidget>

class QAction;
class QLabel;

namespace lumiset::studio {

class Studio;

/// Buttons to play, the time code, and what the viewer reaches. The buttons are the window's actions.
class Transport : public QWidget {
    Q_OBJECT

public:
    /// Before the time code and behind it; null makes a gap.
    Transport(Studio& studio, const QList<QAction*>& left, const QList<QAction*>& right, QWidget* parent = nullptr);

private:
    void refresh();
    void addButtons(const QList<QAction*>& actions);

    Studio& m_studio;
    QLabel* m_time;
    QLabel* m_rate;
};

}  // namespace lumiset::studio
