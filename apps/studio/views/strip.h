#pragma once

#include <QTimer>
#include <QWidget>

class QLineEdit;
class QListView;
class QTabBar;

namespace lumiset::studio {

class Studio;

/// Looks and presets as pictures of the present frame. The pointer over one shows it in the viewer, a click applies it.
class Strip : public QWidget {
    Q_OBJECT

public:
    explicit Strip(Studio& studio, QWidget* parent = nullptr);
    void focusSearch();
    [[nodiscard]] QListView& list() { return *m_list; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void hover(int row);

    Studio& m_studio;
    QTabBar* m_tabs;
    QLineEdit* m_search;
    QListView* m_list;
    QTimer m_hover;
    int m_hovered = -1;
};

}  // namespace lumiset::studio
