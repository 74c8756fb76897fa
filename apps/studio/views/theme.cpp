#include "apps/studio/views/theme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QPalette>
#include <QSettings>
#include <QStyle>

#include "apps/studio/views/studio_style.h"

/// The linker leaves resources of libraries out unless somebody asks for them, outside of every namespace.
static void useIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace lumiset::studio {
namespace {

struct Shades {
    QRgb window, panel, field, text, second, accent, onAccent, line, track, surround, warning, error, cached;
};

// Text on the window and on panels has a contrast of 4.6 : 1 at least.
constexpr Shades kDark{0xFF262626, 0xFF303030, 0xFF1C1C1C, 0xFFE8E8E8, 0xFFA8A8A8, 0xFF4C9BE8, 0xFF101010,
                       0xFF3E3E3E, 0xFF4A4A4A, 0xFF1B1B1B, 0xFFE5A13A, 0xFFF0756E, 0xFF5DAA68};
constexpr Shades kLight{0xFFF2F2F2, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF1E1E1E, 0xFF5A5A5A, 0xFF1F6FC2, 0xFFFFFFFF,
                        0xFFD4D4D4, 0xFFC4C4C4, 0xFF808080, 0xFF8A5A00, 0xFFB3261E, 0xFF3C8A49};

Colors theColors;

QPalette paletteOf(const Shades& shades) {
    QPalette palette;
    palette.setColor(QPalette::Window, shades.window);
    palette.setColor(QPalette::WindowText, shades.text);
    palette.setColor(QPalette::Base, shades.field);
    palette.setColor(QPalette::AlternateBase, shades.panel);
    palette.setColor(QPalette::Text, shades.text);
    palette.setColor(QPalette::PlaceholderText, shades.second);
    palette.setColor(QPalette::Button, shades.panel);
    palette.setColor(QPalette::ButtonText, shades.text);
    palette.setColor(QPalette::BrightText, shades.error);
    palette.setColor(QPalette::Highlight, shades.accent);
    palette.setColor(QPalette::HighlightedText, shades.onAccent);
    palette.setColor(QPalette::Link, shades.accent);
    palette.setColor(QPalette::ToolTipBase, shades.panel);
    palette.setColor(QPalette::ToolTipText, shades.text);
    palette.setColor(QPalette::Light, QColor(shades.panel).lighter(115));
    palette.setColor(QPalette::Midlight, shades.panel);
    palette.setColor(QPalette::Mid, shades.line);
    palette.setColor(QPalette::Dark, QColor(shades.line).darker(115));
    palette.setColor(QPalette::Shadow, QColor(shades.window).darker(160));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(shades.second).darker(shades.text == kDark.text ? 140 : 80));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, shades.line);
    return palette;
}

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kPortalSettings = "org.freedesktop.portal.Settings";
constexpr int kPortalWaitMs = 200;

/// What the desktop's settings portal says: 1 dark, 2 light, 0 nothing.
uint desktopsWish() {
    QDBusMessage question = QDBusMessage::createMethodCall(kPortal, kPortalPath, kPortalSettings, "Read");
    question << "org.freedesktop.appearance"
             << "color-scheme";
    const QDBusMessage reply = QDBusConnection::sessionBus().call(question, QDBus::Block, kPortalWaitMs);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return 0;
    }
    QVariant value = reply.arguments().front();
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.toUInt();
}

}  // namespace

const Colors& colors() {
    return theColors;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

void applyTheme(QApplication& application, Theme theme) {
    useIcons();
    static const QPalette systems = QApplication::palette();
    bool dark = theme == Theme::kDark;
    if (theme == Theme::kSystem) {
        const uint wish = desktopsWish();
        dark = wish == 1 || (wish == 0 && isDark(systems));
    }
    const Shades& shades = dark ? kDark : kLight;
    theColors = {QColor(shades.surround), QColor(shades.second), QColor(shades.line),  QColor(shades.track),
                 QColor(shades.warning),  QColor(shades.error),  QColor(shades.cached)};
    if (qobject_cast<StudioStyle*>(QApplication::style()) == nullptr) {
        QApplication::setStyle(new StudioStyle);
    }
    application.setPalette(paletteOf(shades));
}

ThemeFollower::ThemeFollower(QApplication& application) : m_application(application) {
    QDBusConnection::sessionBus().connect(kPortal, kPortalPath, kPortalSettings, "SettingChanged", this,
                                          SLOT(settingChanged(QString, QString)));
}

void ThemeFollower::settingChanged(const QString& group, const QString& key) {
    if (group == "org.freedesktop.appearance" && key == "color-scheme" &&
        QSettings().value(kThemeSetting).toInt() == static_cast<int>(Theme::kSystem)) {
        applyTheme(m_application, Theme::kSystem);
    }
}

}  // namespace lumiset::studio
