#pragma once

#include <QColor>
#include <QIcon>
#include <QObject>
#include <QString>

class QApplication;
class QPalette;

namespace lumiset::studio {

enum class Theme { kSystem, kLight, kDark };

/// Colours that palettes have no place for.
struct Colors {
    QColor surround;    ///< around the picture
    QColor secondText;  ///< on windows and panels
    QColor line;        ///< between things
    QColor track;       ///< of sliders
    QColor warning;
    QColor error;
    QColor cached;  ///< of the bar that tells what is ready
};
[[nodiscard]] const Colors& colors();

/// Style, palette and font of the whole program. `kSystem` follows the desktop's wish, as long as it can be asked.
void applyTheme(QApplication& application, Theme theme);
[[nodiscard]] bool isDark(const QPalette& palette);
inline constexpr const char* kThemeSetting = "theme";  ///< among the user's settings, as a number

/// Follows the desktop when it turns dark or light while the program runs.
class ThemeFollower : public QObject {
    Q_OBJECT

public:
    explicit ThemeFollower(QApplication& application);

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key);  // the bus calls it by its name

    QApplication& m_application;
};

/// An icon of ours in the colour of the palette's text, pale where it is disabled.
[[nodiscard]] QIcon themeIcon(const QString& name);

// Steps of all distances, in pixels at scale 1.
inline constexpr int kStep = 4;
inline constexpr int kGap = 8;
inline constexpr int kRowHeight = 28;

}  // namespace lumiset::studio
