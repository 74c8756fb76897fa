#pragma once

#include <QDialog>
#include <map>

class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace lumiset::studio {

class ExportQueue;

/// What is being exported, what waits, and what came of the rest.
class QueueWindow : public QDialog {
    Q_OBJECT

public:
    explicit QueueWindow(ExportQueue& queue, QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {560, 320}; }

private:
    struct Row {
        QWidget* widget;
        QLabel* state;
        QProgressBar* bar;
        QPushButton* button;
    };
    void refresh();
    Row makeRow(quint64 number, const QString& title, const QString& under);

    ExportQueue& m_queue;
    QVBoxLayout* m_list;
    QLabel* m_total;
    QPushButton* m_pause;
    QPushButton* m_clear;
    std::map<quint64, Row> m_rows;
};

}  // namespace lumiset::studio
