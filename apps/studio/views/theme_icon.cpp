// Icons that are drawn when they are painted: in the palette's colour of that moment, at the size that the screen has.

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

class ThemeIconEngine : public QIconEngine {
public:
    ThemeIconEngine(const QString& name, const QByteArray& drawing) : m_name(name), m_drawing(drawing) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const double ratio = painter->device()->devicePixelRatioF();
        QPixmap drawn = pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state);
        drawn.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect, drawn);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
        const QPalette palette = QApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        const QByteArray ink = palette.color(group, role).name().toLatin1();
        const QString key = QStringLiteral("lumiset/%1/%2/%3x%4")
                                .arg(m_name, QString::fromLatin1(ink))
                                .arg(size.width())
                                .arg(size.height());
        QPixmap drawn;
        if (!QPixmapCache::find(key, &drawn)) {
            drawn = QPixmap(size);
            drawn.fill(Qt::transparent);
            QPainter painter(&drawn);
            QSvgRenderer(QByteArray(m_drawing).replace("currentColor", ink)).render(&painter);
            painter.end();
            QPixmapCache::insert(key, drawn);
        }
        return drawn;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new ThemeIconEngine(m_name, m_drawing); }

private:
    QString m_name;
    QByteArray m_drawing;
};

}  // namespace

QIcon themeIcon(const QString& name) {
    QFile file(":/icons/" + name + ".svg");
    return file.open(QIODevice::ReadOnly) ? QIcon(new ThemeIconEngine(name, file.readAll())) : QIcon();
}

}  // namespace lumiset::studio
