#pragma once

#include <QListView>

namespace lumiset::studio {

class StackModel;
class Studio;

/// The document's effects: which there are, their order, and which are on.
class StackView : public QListView {
    Q_OBJECT

public:
    StackView(Studio& studio, StackModel& model, QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    bool event(QEvent* event) override;

private:
    void follow();

    Studio& m_studio;
};

}  // namespace lumiset::studio
