#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace lumiset {
namespace render {
struct FileJob;
}
namespace studio {

class Studio;

/// Where the clip goes, and as what. Accepting it adds the look as it is now to the queue.
class ExportDialog : public QDialog {
    Q_OBJECT

public:
    explicit ExportDialog(Studio& studio, QWidget* parent = nullptr);

    [[nodiscard]] render::FileJob job() const;

private:
    void chooseKind();
    void browse();
    void check();
    void copyCommand();
    void add();

    Studio& m_studio;
    QComboBox* m_kind;
    QLineEdit* m_file;
    QComboBox* m_range;
    QComboBox* m_size;
    QComboBox* m_depth;
    QComboBox* m_quality;
    QCheckBox* m_alpha;
    QComboBox* m_renderer;
    QLabel* m_note;
    QPushButton* m_add;
};

}  // namespace studio
}  // namespace lumiset
