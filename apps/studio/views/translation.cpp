#include "apps/studio/views/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <memory>

/// The linker leaves resources of libraries out unless somebody asks for them, outside of every namespace.
static void useTranslations() {
    Q_INIT_RESOURCE(translations);
}

namespace lumiset::studio {

void translate(QCoreApplication& application, const QLocale& language) {
    useTranslations();
    const auto take = [&](const QString& name, const QString& folder) {
        auto texts = std::make_unique<QTranslator>(&application);
        if (texts->load(language, name, "_", folder)) {
            QCoreApplication::installTranslator(texts.release());
        }
    };
    take("qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    take("lumiset-studio", ":/translations");
}

}  // namespace lumiset::studio
