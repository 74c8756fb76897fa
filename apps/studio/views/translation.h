#pragma once

class QCoreApplication;
class QLocale;

namespace lumiset::studio {

/// Takes the program's texts, and those of Qt's own dialogs, in a language, as far as there are any; English otherwise.
/// Before the first window.
void translate(QCoreApplication& application, const QLocale& language);

}  // namespace lumiset::studio
